#include "tovgraphnode.h"
#include "tovgraphrevision_p.h"

#include <algorithm>

namespace {

using EdgeEntry = std::pair<int, TovGraphEdge *>;

std::vector<EdgeEntry>::const_iterator lowerBound(const std::vector<EdgeEntry> &map, int key)
{
    return std::lower_bound(
        map.begin(), map.end(), key, [](const EdgeEntry &entry, int k) { return entry.first < k; });
}

TovGraphEdge *lookup(const std::vector<EdgeEntry> &map, int key)
{
    const auto it = lowerBound(map, key);
    return it != map.end() && it->first == key ? it->second : nullptr;
}

} // namespace

TovGraphNode::TovGraphNode(const int &key)
    : m_key(key)
{ }

TovGraphNode::~TovGraphNode()
{
    TovGraphRevision::bump();
}

void TovGraphNode::setWeight(const int &weight)
{
    m_weight = weight;
    TovGraphRevision::bump();
}

std::vector<TovGraphEdge *> TovGraphNode::getEdges(const bool &isIn) const
{
    const EdgeMap &map = side(isIn);
    std::vector<TovGraphEdge *> edges;
    edges.reserve(map.size());
    for (const EdgeEntry &entry : map)
        edges.push_back(entry.second);
    return edges;
}

std::vector<int> TovGraphNode::getKeys(const bool &isIn) const
{
    const EdgeMap &map = side(isIn);
    std::vector<int> keys;
    keys.reserve(map.size());
    for (const EdgeEntry &entry : map)
        keys.push_back(entry.first);
    return keys;
}

int TovGraphNode::edgeCount(const bool &isIn) const
{
    return int(side(isIn).size());
}

bool TovGraphNode::existEdge(const int &key, const bool &isIn) const
{
    return lookup(side(isIn), key) != nullptr;
}

TovGraphEdge *TovGraphNode::getEdge(const int &key, const bool &isIn) const
{
    return lookup(side(isIn), key);
}

bool TovGraphNode::hasEdges() const
{
    return !m_inEdges.empty() || !m_outEdges.empty();
}

bool TovGraphNode::addEdge(const int &key, TovGraphEdge *edge, const bool &isIn)
{
    if (lookup(m_inEdges, key) || lookup(m_outEdges, key))
        return false;
    EdgeMap &map = side(isIn);
    map.insert(map.begin() + (lowerBound(map, key) - map.begin()), EdgeEntry(key, edge));
    TovGraphRevision::bump();
    return true;
}

void TovGraphNode::removeEdge(const int &key, const bool &isIn)
{
    EdgeMap &map = side(isIn);
    const auto it = lowerBound(map, key);
    if (it != map.end() && it->first == key) {
        map.erase(map.begin() + (it - map.begin()));
        TovGraphRevision::bump();
    }
}

void TovGraphNode::removeEdge(const int &key)
{
    removeEdge(key, true);
    removeEdge(key, false);
}
