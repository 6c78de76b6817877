#pragma once

#include <set>
#include <vector>

class TovGraphEdge;
class TovGraphNode;

// A compact, read-only image of the component searched: per node and side the edges that the
// search follows, already filtered by the key path candidates and ordered by edge weight, so
// that the depth-first search itself neither looks anything up nor allocates. The searcher keeps
// it between calls and searches it again from any node it holds, for as long as no graph has
// changed (TovGraphRevision) and the candidates are the same; flags are read afresh every run.
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
    // A node on the path (its key and weight) with edges to go on with, and the edge it is
    // following. The scan position and end are stored only when a child is entered, to be read
    // back on return.
    struct Frame
    {
        int key;
        int weight;
        int pos;
        int end;
        int followedFar;
        int followedWeight;
    };

    bool contains(const TovGraphNode *node) const;
    // Whether a search from node can run on this image as it stands.
    bool isCurrentFor(const TovGraphNode *node) const;
    int indexOf(const TovGraphNode *node) const;
    // Empties the image, keeping the storage for the next build.
    void clear();
    // Collects the nodes the search can reach from start and prepares their arcs.
    void build(TovGraphNode *start, const std::set<int> &candidates);
    // The candidates of the last build.
    const std::set<int> &candidates() const { return m_candidates; }

    std::vector<Node> nodes;
    std::vector<TovGraphNode *> graphNodes; // by the same index
    std::vector<Arc> arcs;
    // Scratch of one run, sized for the longest simple path.
    std::vector<unsigned char> flags; // non-zero flags, by node index
    std::vector<int> best;
    std::vector<Frame> frames;
    std::vector<int> halves[2]; // the two halves of a one-node search

private:
    std::vector<const TovGraphEdge *> m_edges; // scratch of build
    unsigned long long m_stamp = 0; // marks the graph's nodes as members of this image
    unsigned long long m_revision = 0; // of the graphs when built; 0 when empty
    std::set<int> m_candidates;
};
