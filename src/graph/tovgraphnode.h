#pragma once

#include "tovgeneralutility_export.h"

#include <utility>
#include <vector>

class TovGraphEdge;
class TovGraphStruct;

// A node of a TovGraphStruct: an integer key and two sides, each holding the edges to its
// neighbours in ascending neighbour-key order. A neighbour occurs at most once over both sides.
// Edges are owned by the graph, not by the node.
class TOVGENERALUTILITY_EXPORT TovGraphNode
{
public:
    explicit TovGraphNode(const int &key);
    virtual ~TovGraphNode();

    int getKey() const { return m_key; }
    int getWeight() const { return m_weight; }
    void setWeight(const int &weight);
    // Non-zero while the node is on a searched path; a caller sets it to keep searches out.
    int getFlag() const { return m_flag; }
    void setFlag(const int &flag) { m_flag = flag; }
    // Scratch mark of region building (TovGraphStruct::getRegionList).
    bool isRegionMarked() const { return m_regionMark; }
    void setRegionMarked(bool marked) { m_regionMark = marked; }

    // Edges (neighbour keys) of the in side (true) or the out side (false), ascending by key.
    std::vector<TovGraphEdge *> getEdges(const bool &isIn) const;
    std::vector<int> getKeys(const bool &isIn) const;
    int edgeCount(const bool &isIn) const;
    bool existEdge(const int &key, const bool &isIn) const;
    // The edge to that neighbour on that side, or null.
    TovGraphEdge *getEdge(const int &key, const bool &isIn) const;
    bool hasEdges() const;

protected:
    // False, changing nothing, when key is already a neighbour on either side.
    bool addEdge(const int &key, TovGraphEdge *edge, const bool &isIn);
    void removeEdge(const int &key, const bool &isIn);
    void removeEdge(const int &key);

private:
    friend class TovGraphStruct;
    friend class TovPathSearchPlan;
    friend class TovPathSearcher;
    using EdgeEntry = std::pair<int, TovGraphEdge *>;
    using EdgeMap = std::vector<EdgeEntry>; // sorted by key: degrees are small

    const EdgeMap &side(bool isIn) const { return isIn ? m_inEdges : m_outEdges; }
    EdgeMap &side(bool isIn) { return isIn ? m_inEdges : m_outEdges; }

    TovGraphNode(const TovGraphNode &) = delete;
    TovGraphNode &operator=(const TovGraphNode &) = delete;

    const int m_key;
    EdgeMap m_inEdges;
    EdgeMap m_outEdges;
    int m_weight = 0;
    int m_flag = 0;
    bool m_regionMark = false;
    // Scratch of the path searcher: this node's index in the search plan stamped planStamp.
    unsigned long long m_planStamp = 0;
    int m_planIndex = 0;
};
