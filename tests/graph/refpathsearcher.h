#pragma once

// The heaviest-path search written step by step as the algorithm reads: ordered maps, plain
// recursion, fresh vectors on every call. Slow on purpose; tests and benchmarks compare the
// library against it. Header-only so that the benchmark can include it as well.

#include <QElapsedTimer>
#include <QList>
#include <QMap>

#include <algorithm>
#include <climits>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace ref {

struct Node;

struct Edge
{
    Node *node1;
    Node *node2;
    bool isIn1;
    bool isIn2;
    int weight = 0;
};

struct Node
{
    explicit Node(int k)
        : key(k)
    { }
    int key;
    std::map<int, Edge *> inEdges;
    std::map<int, Edge *> outEdges;
    int weight = 0;
    int flag = 0;
    bool regionMark = false;

    std::map<int, Edge *> &side(bool isIn) { return isIn ? inEdges : outEdges; }
    std::vector<Edge *> getEdges(bool isIn)
    {
        std::vector<Edge *> edges;
        for (const auto &entry : side(isIn))
            edges.push_back(entry.second);
        return edges;
    }
    bool addEdge(int k, Edge *edge, bool isIn)
    {
        if (inEdges.count(k) || outEdges.count(k))
            return false;
        side(isIn)[k] = edge;
        return true;
    }
};

class Graph
{
public:
    Node *addNode(int key)
    {
        auto it = nodes.find(key);
        if (it != nodes.end())
            return it->second.get();
        return (nodes[key] = std::make_unique<Node>(key)).get();
    }
    Node *findNode(int key)
    {
        auto it = nodes.find(key);
        return it == nodes.end() ? nullptr : it->second.get();
    }
    Edge *addEdge(int key1, int key2, bool isIn1, bool isIn2)
    {
        Node *n1 = addNode(key1);
        Node *n2 = addNode(key2);
        auto existing = n1->side(isIn1).find(key2);
        if (existing != n1->side(isIn1).end())
            return existing->second;
        auto edge = std::make_unique<Edge>(Edge { n1, n2, isIn1, isIn2 });
        const bool ok1 = n1->addEdge(key2, edge.get(), isIn1);
        const bool ok2 = n2->addEdge(key1, edge.get(), isIn2);
        if (ok1 && ok2) {
            edges.push_back(std::move(edge));
            return edges.back().get();
        }
        if (ok1)
            n1->side(isIn1).erase(key2);
        if (ok2)
            n2->side(isIn2).erase(key1);
        return nullptr;
    }
    void removeEdge(Edge *edge)
    {
        edge->node1->side(edge->isIn1).erase(edge->node2->key);
        edge->node2->side(edge->isIn2).erase(edge->node1->key);
        edges.erase(std::find_if(
            edges.begin(), edges.end(), [edge](const std::unique_ptr<Edge> &e) { return e.get() == edge; }));
    }
    void removeNode(int key)
    {
        Node *node = findNode(key);
        if (!node)
            return;
        for (bool isIn : { true, false }) {
            while (!node->side(isIn).empty())
                removeEdge(node->side(isIn).begin()->second);
        }
        nodes.erase(key);
    }

    QList<QList<Node *>> getRegionList()
    {
        QList<QList<Node *>> result;
        for (auto &entry : nodes)
            entry.second->regionMark = false;
        for (auto &entry : nodes) {
            Node *node = entry.second.get();
            if (node->regionMark)
                continue;
            node->regionMark = true;
            QList<Node *> list { node };
            searchRelationNode(node, list);
            result.append(list);
        }
        return result;
    }
    void searchRelationNode(Node *node, QList<Node *> &list)
    {
        for (bool isIn : { true, false }) {
            for (const auto &entry : node->side(isIn)) {
                Node *next = findNode(entry.first);
                if (!next->regionMark) {
                    next->regionMark = true;
                    list.append(next);
                    searchRelationNode(next, list);
                }
            }
        }
    }
    QList<QList<int>> buildGroupKeys(const QList<int> &keys)
    {
        QMap<int, int> map;
        for (int key : keys)
            map.insert(key, key);
        QList<QList<int>> result;
        for (const QList<Node *> &region : getRegionList()) {
            QList<int> group;
            for (Node *node : region) {
                if (map.contains(node->key)) {
                    group.append(node->key);
                    map.remove(node->key);
                }
                if (map.isEmpty())
                    break;
            }
            if (!group.isEmpty())
                result.append(group);
            if (map.isEmpty())
                break;
        }
        return result;
    }

    std::map<int, std::unique_ptr<Node>> nodes;
    std::vector<std::unique_ptr<Edge>> edges;
};

class PathSearcher
{
public:
    PathSearcher() = default;
    PathSearcher(const PathSearcher &) = delete;
    PathSearcher &operator=(const PathSearcher &) = delete;
    ~PathSearcher() { delete timer; }

    void setKeyPathCandidate(const std::set<int> &keys) { keyPathCandidates = keys; }
    void setPathValidFunc(std::function<bool(const int &, const bool &)> f) { pathValidFunc = std::move(f); }
    void setTimeout(int ms) { timeout = ms; }

    void searchPath(std::vector<int> &path, int &weight, Graph *graph, int startKey, int endKey, int stop)
    {
        currentPath.clear();
        currentWeight = 0;
        currentScore = 0;
        stopWeight = stop;
        int bestScore = 0;
        Node *start = graph->findNode(startKey);
        Node *end = graph->findNode(endKey);
        if (!start || !end)
            return;
        if (timeout >= 1 && !timer)
            timer = new QElapsedTimer;
        if (timer) {
            bestWeightSeen = 0;
            timer->start();
        }
        const bool inAdj = existAdjacentKey(start, true);
        const bool outAdj = existAdjacentKey(start, false);
        start->flag = 1;
        if (inAdj || !outAdj) {
            doSearchPath(path, weight, bestScore, start, end, true);
            doSearchPath(path, weight, bestScore, start, end, false);
        } else {
            doSearchPath(path, weight, bestScore, start, end, false);
            doSearchPath(path, weight, bestScore, start, end, true);
        }
        start->flag = 0;
    }

    void searchPath(std::vector<int> &path, int &weight, Graph *graph, int startKey, bool bothWays)
    {
        currentPath.clear();
        stopWeight = 2147483647;
        Node *start = graph->findNode(startKey);
        start->flag = 1;
        std::vector<int> a, b;
        int wA = 0, sA = 0, wB = 0, sB = 0;
        currentWeight = 0;
        currentScore = 0;
        doSearchPath(a, wA, sA, start, nullptr, true);
        currentWeight = 0;
        currentScore = 0;
        doSearchPath(b, wB, sB, start, nullptr, false);
        start->flag = 0;
        if (!bothWays) {
            if (wA > weight && (wA > wB || (wA == wB && sA >= sB))) {
                path = a;
                weight = wA;
            } else if (wB > weight && (wB > wA || (wB == wA && sB > sA))) {
                path = b;
                weight = wB;
            }
            return;
        }
        const int joined = wA + wB - start->weight;
        if (joined <= weight)
            return;
        std::vector<int> result;
        for (int i = int(a.size()) - 1; i >= 1; --i)
            result.push_back(a[i]);
        result.push_back(startKey);
        for (std::size_t i = 1; i < b.size(); ++i)
            result.push_back(b[i]);
        path = result;
        weight = joined;
    }

    void searchPath(const QList<int> &keys, std::vector<int> &path, Graph *graph, bool keysAreCandidates)
    {
        if (keys.size() >= 2) {
            if (keysAreCandidates)
                keyPathCandidates = std::set<int>(keys.begin(), keys.end());
            int local = 0;
            int stop = keys.size();
            for (int i = 0; i < keys.size(); ++i) {
                for (int j = i + 1; j < keys.size(); ++j) {
                    searchPath(path, local, graph, keys[i], keys[j], stop);
                    stop = stopWeight;
                    if (local == stop) {
                        if (local != 0)
                            return;
                        goto fallback;
                    }
                }
            }
            if (local != 0)
                return;
        }
    fallback:
        if (!keys.isEmpty())
            path.push_back(keys[0]);
    }

    void searchPathByRegion(
        const QList<int> &keys, std::vector<int> &path, Graph *graph, bool keysAreCandidates)
    {
        if (keys.isEmpty())
            return;
        if (keys.size() >= 2) {
            QList<QList<int>> groups = graph->buildGroupKeys(keys);
            std::stable_sort(groups.begin(), groups.end(),
                [](const QList<int> &x, const QList<int> &y) { return x.size() > y.size(); });
            for (const QList<int> &group : groups) {
                if (group.size() > 1) {
                    searchPath(group, path, graph, keysAreCandidates);
                    if (!path.empty())
                        break;
                }
            }
        }
        if (path.empty())
            path.push_back(keys[0]);
    }

    long long steps = 0; // calls of doSearchPath, for the benchmark's step rate

private:
    void record(std::vector<int> &bestPath, int &bestWeight, int &bestScore)
    {
        if (currentWeight > bestWeight || (currentWeight == bestWeight && currentScore > bestScore)) {
            bestPath = currentPath;
            bestWeight = currentWeight;
            bestScore = currentScore;
        }
    }

    bool pathValid(int key, bool isIn) { return !pathValidFunc || pathValidFunc(key, isIn); }

    static Node *farNode(Edge *e, Node *node) { return e->node1->key != node->key ? e->node1 : e->node2; }

    bool existAdjacentKey(Node *node, bool isIn)
    {
        for (Edge *e : node->getEdges(isIn)) {
            if (keyPathCandidates.count(farNode(e, node)->key))
                return true;
        }
        return false;
    }

    void simplifyEdges(Node *node, std::vector<Edge *> &edges)
    {
        std::vector<Edge *> kept;
        for (Edge *e : edges) {
            if (keyPathCandidates.count(farNode(e, node)->key))
                kept.push_back(e);
        }
        if (!kept.empty())
            edges = kept;
    }

    void doSearchPath(
        std::vector<int> &bestPath, int &bestWeight, int &bestScore, Node *node, Node *target, bool isIn)
    {
        ++steps;
        // 1
        if (pathValidFunc && !pathValid(node->key, isIn)) {
            if (!target)
                record(bestPath, bestWeight, bestScore);
            return;
        }
        // 2
        currentPath.push_back(node->key);
        currentWeight += node->weight;
        // 3
        if (target && node->key == target->key) {
            record(bestPath, bestWeight, bestScore);
            currentWeight -= node->weight;
            currentPath.pop_back();
            return;
        }
        // 4
        std::vector<Edge *> edges = node->getEdges(isIn);
        if (!target && edges.empty()) {
            record(bestPath, bestWeight, bestScore);
            currentWeight -= node->weight;
            currentPath.pop_back();
            return;
        }
        // 5, 6
        simplifyEdges(node, edges);
        std::stable_sort(edges.begin(), edges.end(), [](Edge *x, Edge *y) { return x->weight < y->weight; });
        // 7
        bool taken = false;
        for (Edge *e : edges) {
            Node *far = farNode(e, node);
            const bool nextIsIn = far == e->node2 ? !e->isIn2 : !e->isIn1;
            if (far->flag != 0)
                continue;
            bestWeightSeen = std::max(bestWeightSeen, bestWeight);
            if (bestWeightSeen >= 0 && bestWeightSeen != 1 && timer && timer->elapsed() > timeout) {
                stopWeight = bestWeightSeen;
                delete timer;
                timer = nullptr;
            }
            if (bestWeight == stopWeight && bestScore > currentScore - e->weight)
                continue;
            taken = true;
            currentScore -= e->weight;
            far->flag = 1;
            doSearchPath(bestPath, bestWeight, bestScore, far, target, nextIsIn);
            far->flag = 0;
            currentScore += e->weight;
        }
        // 8
        if (!target && !taken)
            record(bestPath, bestWeight, bestScore);
        // 9
        currentWeight -= node->weight;
        currentPath.pop_back();
    }

    std::vector<int> currentPath;
    std::set<int> keyPathCandidates;
    int currentWeight = 0;
    int currentScore = 0;
    int stopWeight = 0;
    std::function<bool(const int &, const bool &)> pathValidFunc;
    int timeout = 0;
    QElapsedTimer *timer = nullptr;
    int bestWeightSeen = 0;
};

} // namespace ref
