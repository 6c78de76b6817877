#include "tovgraphedge.h"
#include "tovgraphrevision_p.h"

TovGraphEdge::TovGraphEdge(
    TovGraphNode *node1, TovGraphNode *node2, const bool &isInEdge1, const bool &isInEdge2)
    : m_node1(node1)
    , m_node2(node2)
    , m_isInEdge1(isInEdge1)
    , m_isInEdge2(isInEdge2)
{ }

TovGraphEdge &TovGraphEdge::operator=(const TovGraphEdge &other)
{
    m_node1 = other.m_node1;
    m_node2 = other.m_node2;
    m_isInEdge1 = other.m_isInEdge1;
    m_isInEdge2 = other.m_isInEdge2;
    m_weight = other.m_weight;
    m_data = other.m_data;
    TovGraphRevision::bump();
    return *this;
}

TovGraphEdge::~TovGraphEdge()
{
    TovGraphRevision::bump();
}

void TovGraphEdge::setWeight(const int &weight)
{
    m_weight = weight;
    TovGraphRevision::bump();
}
