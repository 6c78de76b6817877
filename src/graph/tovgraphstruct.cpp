#include "tovgraphstruct.h"
#include "tovgraphedge.h"
#include "tovgraphnode.h"
#include "tovgraphstruct_p.h"

#include <QFile>
#include <QTextStream>

#include <algorithm>
#include <unordered_set>

TovGraphStruct::TovGraphStruct()
    : d(new TovGraphStructPrivate)
{ }

TovGraphStruct::TovGraphStruct(const TovGraphStruct &other)
    : d(new TovGraphStructPrivate)
{
    copyFrom(other);
}

TovGraphStruct &TovGraphStruct::operator=(const TovGraphStruct &other)
{
    if (this != &other) {
        clear();
        copyFrom(other);
    }
    return *this;
}

TovGraphStruct::~TovGraphStruct()
{
    clear();
}

void TovGraphStruct::copyFrom(const TovGraphStruct &other)
{
    for (const auto &entry : other.d->nodes) {
        TovGraphNode *node = addNode(entry.first);
        node->setWeight(entry.second->getWeight());
        node->setFlag(entry.second->getFlag());
    }
    for (const TovGraphEdge *source : other.d->edges) {
        TovGraphEdge *edge = addEdge(source->getNode1()->getKey(), source->getNode2()->getKey(),
            source->IsInEdge1(), source->IsInEdge2());
        edge->setWeight(source->getWeight());
        edge->setData(source->data());
    }
}

TovGraphNode *TovGraphStruct::addNode(const int &key)
{
    auto it = d->nodes.lower_bound(key);
    if (it != d->nodes.end() && it->first == key)
        return it->second;
    TovGraphNode *node = newNode(key);
    d->nodes.emplace_hint(it, key, node);
    return node;
}

TovGraphNode *TovGraphStruct::findNode(const int &key) const
{
    const auto it = d->nodes.find(key);
    return it == d->nodes.end() ? nullptr : it->second;
}

bool TovGraphStruct::existNode(const int &key) const
{
    return d->nodes.count(key) != 0;
}

TovGraphEdge *TovGraphStruct::addEdge(const int &key1, const int &key2, const bool &isIn1, const bool &isIn2)
{
    TovGraphNode *node1 = addNode(key1);
    TovGraphNode *node2 = addNode(key2);
    if (TovGraphEdge *existing = node1->getEdge(key2, isIn1))
        return existing;
    TovGraphEdge *edge = newEdge(node1, node2, isIn1, isIn2);
    const bool entered1 = node1->addEdge(key2, edge, isIn1);
    const bool entered2 = node2->addEdge(key1, edge, isIn2);
    if (entered1 && entered2) {
        d->edges.push_back(edge);
        return edge;
    }
    // A self-loop lands here too: its second entry meets its own first one.
    if (entered1)
        node1->removeEdge(key2, isIn1);
    else if (entered2)
        node2->removeEdge(key1, isIn2);
    delete edge;
    return nullptr;
}

void TovGraphStruct::removeEdge(TovGraphEdge *edge)
{
    if (!edge)
        return;
    edge->getNode1()->removeEdge(edge->getNode2()->getKey(), edge->IsInEdge1());
    edge->getNode2()->removeEdge(edge->getNode1()->getKey(), edge->IsInEdge2());
    const auto it = std::find(d->edges.begin(), d->edges.end(), edge);
    if (it != d->edges.end())
        d->edges.erase(it);
    delete edge;
}

void TovGraphStruct::removeNode(const int &key)
{
    const auto it = d->nodes.find(key);
    if (it == d->nodes.end())
        return;
    TovGraphNode *node = it->second;
    std::unordered_set<TovGraphEdge *> doomed;
    for (const bool isIn : { true, false }) {
        for (const auto &entry : node->side(isIn)) {
            TovGraphEdge *edge = entry.second;
            doomed.insert(edge);
            TovGraphNode *other = edge->getNode1() == node ? edge->getNode2() : edge->getNode1();
            other->removeEdge(key);
        }
    }
    // One pass over the edge list keeps removal linear for nodes of high degree.
    d->edges.erase(std::remove_if(d->edges.begin(), d->edges.end(),
                       [&doomed](TovGraphEdge *edge) { return doomed.count(edge) != 0; }),
        d->edges.end());
    for (TovGraphEdge *edge : doomed)
        delete edge;
    d->nodes.erase(it);
    delete node;
}

void TovGraphStruct::clear()
{
    for (TovGraphEdge *edge : d->edges)
        delete edge;
    d->edges.clear();
    for (const auto &entry : d->nodes)
        delete entry.second;
    d->nodes.clear();
}

std::vector<TovGraphNode *> TovGraphStruct::getNodes() const
{
    std::vector<TovGraphNode *> nodes;
    nodes.reserve(d->nodes.size());
    for (const auto &entry : d->nodes)
        nodes.push_back(entry.second);
    return nodes;
}

std::vector<int> TovGraphStruct::getKeys() const
{
    std::vector<int> keys;
    keys.reserve(d->nodes.size());
    for (const auto &entry : d->nodes)
        keys.push_back(entry.first);
    return keys;
}

const std::vector<TovGraphEdge *> &TovGraphStruct::getEdges() const
{
    return d->edges;
}

QList<QList<TovGraphNode *> *> TovGraphStruct::getRegionList()
{
    QList<QList<TovGraphNode *> *> regions;
    for (const auto &entry : d->nodes)
        entry.second->setRegionMarked(false);
    for (const auto &entry : d->nodes) {
        TovGraphNode *node = entry.second;
        if (node->isRegionMarked())
            continue;
        node->setRegionMarked(true);
        auto *list = new QList<TovGraphNode *>;
        list->append(node);
        searchRelationNode(node, *list);
        regions.append(list);
    }
    return regions;
}

void TovGraphStruct::searchRelationNode(TovGraphNode *node, QList<TovGraphNode *> &list)
{
    // Depth-first with an explicit stack, so that long chains cannot exhaust the call stack; the
    // discovery order is that of the plain recursion.
    struct Frame
    {
        TovGraphNode *node;
        bool isIn;
        std::size_t next;
    };
    std::vector<Frame> stack;
    stack.push_back({ node, true, 0 });
    while (!stack.empty()) {
        Frame &frame = stack.back();
        const auto &side = frame.node->side(frame.isIn);
        if (frame.next == side.size()) {
            if (frame.isIn) {
                frame.isIn = false;
                frame.next = 0;
            } else {
                stack.pop_back();
            }
            continue;
        }
        const TovGraphEdge *edge = side[frame.next++].second;
        TovGraphNode *neighbour = edge->getNode1() == frame.node ? edge->getNode2() : edge->getNode1();
        if (!neighbour->isRegionMarked()) {
            neighbour->setRegionMarked(true);
            list.append(neighbour);
            stack.push_back({ neighbour, true, 0 });
        }
    }
}

QList<QList<int>> TovGraphStruct::buildGroupKeys(const QList<int> &keys)
{
    QMap<int, int> map;
    for (int key : keys)
        map.insert(key, key);
    return doBuildGroupKeys(map);
}

QList<QList<int>> TovGraphStruct::doBuildGroupKeys(QMap<int, int> keys)
{
    QList<QList<int>> groups;
    const QList<QList<TovGraphNode *> *> regions = getRegionList();
    for (const QList<TovGraphNode *> *region : regions) {
        if (keys.isEmpty())
            break;
        QList<int> group;
        for (const TovGraphNode *node : *region) {
            if (keys.remove(node->getKey()) != 0) {
                group.append(node->getKey());
                if (keys.isEmpty())
                    break;
            }
        }
        if (!group.isEmpty())
            groups.append(group);
    }
    qDeleteAll(regions);
    return groups;
}

void TovGraphStruct::saveToFile(const QString &filePath) const
{
    QFile file(filePath);
    if (!file.open(QIODevice::ReadWrite))
        return;
    file.resize(0);
    QTextStream stream(&file);
    const auto writeEdges = [&stream](const TovGraphNode *node, bool isIn) {
        const QString form = isIn
            ? QStringLiteral("InEdge:Key1=%1,Key2=%2,IsInEdge1=%3,IsInEdge2=%4,Weight=%5")
            : QStringLiteral("OutEdge:Key1=%1,Key2=%2,IsInEdge1=%3,IsInEdge2=%4,Weight=%5");
        for (const auto &entry : node->side(isIn)) {
            const TovGraphEdge *edge = entry.second;
            stream << form.arg(edge->getNode1()->getKey())
                          .arg(edge->getNode2()->getKey())
                          .arg(int(edge->IsInEdge1()))
                          .arg(int(edge->IsInEdge2()))
                          .arg(edge->getWeight())
                   << '\n';
        }
    };
    for (const auto &entry : d->nodes) {
        const TovGraphNode *node = entry.second;
        stream << QStringLiteral("Node:Key=%1,Weight=%2").arg(node->getKey()).arg(node->getWeight()) << '\n';
        writeEdges(node, true);
        writeEdges(node, false);
        stream << QString(50, QLatin1Char('*')) << '\n';
    }
}

TovGraphNode *TovGraphStruct::newNode(const int &key)
{
    return new TovGraphNode(key);
}

TovGraphEdge *TovGraphStruct::newEdge(
    TovGraphNode *node1, TovGraphNode *node2, const bool &isIn1, const bool &isIn2)
{
    return new TovGraphEdge(node1, node2, isIn1, isIn2);
}
