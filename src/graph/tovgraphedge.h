#pragma once

#include "tovgeneralutility_export.h"

class TovGraphNode;

// An edge of a TovGraphStruct, attached to a definite side (in or out) of each of its two nodes.
// The nodes are borrowed; the user data pointer is never owned or freed.
class TOVGENERALUTILITY_EXPORT TovGraphEdge
{
public:
    TovGraphEdge(TovGraphNode *node1, TovGraphNode *node2, const bool &isInEdge1, const bool &isInEdge2);
    TovGraphEdge(const TovGraphEdge &other) = default;
    TovGraphEdge &operator=(const TovGraphEdge &other);
    virtual ~TovGraphEdge();

    TovGraphNode *getNode1() const { return m_node1; }
    TovGraphNode *getNode2() const { return m_node2; }
    // True when the edge sits on node 1's (node 2's) in side, false for the out side.
    bool IsInEdge1() const { return m_isInEdge1; }
    bool IsInEdge2() const { return m_isInEdge2; }

    int getWeight() const { return m_weight; }
    void setWeight(const int &weight);

    void *data() const { return m_data; }
    void setData(void *data) { m_data = data; }

private:
    TovGraphNode *m_node1;
    TovGraphNode *m_node2;
    bool m_isInEdge1;
    bool m_isInEdge2;
    int m_weight = 0;
    void *m_data = nullptr;
};
