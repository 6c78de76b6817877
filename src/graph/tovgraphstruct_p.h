#pragma once

#include <map>
#include <vector>

class TovGraphEdge;
class TovGraphNode;

class TovGraphStructPrivate
{
public:
    std::map<int, TovGraphNode *> nodes;
    std::vector<TovGraphEdge *> edges;
};
