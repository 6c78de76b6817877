#pragma once

#include <set>
#include <unordered_map>
#include <vector>

class TovGraphNode;

// A compact, read-only image of the component searched: per node and side the edges that the
// search follows, already filtered by the key path candidates and ordered by edge weight, so
// that the depth-first search itself neither looks anything up nor allocates. Node flags stay
// in the graph's nodes: callers and predicates see them as the search sets them.
class TovPathSearchPlan
{
public:
    struct Arc
    {
        int far; // index into nodes
        int weight;
        bool goOnIn; // the side by which the search leaves the far node
    };
    struct Node
    {
        TovGraphNode *node;
        int key;
        int weight;
        int arcBegin[2]; // by side: [0] out, [1] in
        int arcEnd[2];
    };
    struct Frame
    {
        int node;
        int pos;
        int end;
        int pendingFar;
        int pendingWeight;
        bool taken;
    };

    bool contains(const TovGraphNode *node) const { return index.count(node) != 0; }
    // Collects the component of start (sides ignored) and prepares its arcs.
    void build(TovGraphNode *start, const std::set<int> &candidates);

    std::vector<Node> nodes;
    std::vector<Arc> arcs;
    std::unordered_map<const TovGraphNode *, int> index;
    // Scratch of one run, sized for the longest simple path.
    std::vector<int> path;
    std::vector<int> best;
    std::vector<Frame> frames;
};
