#pragma once

#include <set>
#include <vector>

class TovGraphEdge;
class TovGraphNode;

// A compact, read-only image of the component searched: per node and side the edges that the
// search follows, already filtered by the key path candidates and ordered by edge weight, so
// that the depth-first search itself neither looks anything up nor allocates. Built once per
// search call (and reused by the pairs of a key-list search), while the graph cannot change;
// the searcher keeps it between calls only for its storage.
class TovPathSearchPlan
{
public:
    // Kept small: the search walks these arrays and little else.
    struct Arc
    {
        int farSide; // index of the far node * 2 + the side (1 in) by which the search leaves it
        int weight;
    };
    struct Node
    {
        int key;
        int weight;
        int arcs[3]; // out side arcs [arcs[0], arcs[1]), in side arcs [arcs[1], arcs[2])
    };
    // A node on the path with edges to go on with, and the edge it is following.
    struct Frame
    {
        int pos;
        int end;
        int weight;
        int followedFar;
        int followedWeight;
        bool taken;
    };

    bool contains(const TovGraphNode *node) const;
    int indexOf(const TovGraphNode *node) const;
    // Empties the image, keeping the storage for the next build.
    void clear();
    // Collects the nodes the search can reach from start and prepares their arcs.
    void build(TovGraphNode *start, const std::set<int> &candidates);

    std::vector<Node> nodes;
    std::vector<TovGraphNode *> graphNodes; // by the same index
    std::vector<Arc> arcs;
    // Scratch of one run, sized for the longest simple path.
    std::vector<unsigned char> flags; // non-zero flags, by node index
    std::vector<int> path;
    std::vector<int> best;
    std::vector<Frame> frames;
    std::vector<int> halves[2]; // the two halves of a one-node search

private:
    std::vector<const TovGraphEdge *> m_edges; // scratch of build
    unsigned long long m_stamp = 0; // marks the graph's nodes as members of this image
};
