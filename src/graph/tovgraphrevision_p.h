#pragma once

#include <atomic>

// A process-wide count of the changes that can alter what a path search sees: node and edge
// weights, edges added to or removed from a side, nodes and edges deleted. Searchers keep their
// image of a graph only while it is unchanged. One counter for every graph, so that nodes and
// edges need no link back to their graph; a change elsewhere merely costs a rebuild.
class TovGraphRevision
{
public:
    static unsigned long long current() { return s_count.load(std::memory_order_relaxed); }
    static void bump() { s_count.fetch_add(1, std::memory_order_relaxed); }

private:
    static std::atomic<unsigned long long> s_count;
};
