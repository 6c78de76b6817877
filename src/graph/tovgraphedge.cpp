#include "tovgraphedge.h"

TovGraphEdge::TovGraphEdge(
    TovGraphNode *node1, TovGraphNode *node2, const bool &isInEdge1, const bool &isInEdge2)
    : m_node1(node1)
    , m_node2(node2)
    , m_isInEdge1(isInEdge1)
    , m_isInEdge2(isInEdge2)
{ }

TovGraphEdge::~TovGraphEdge() = default;
