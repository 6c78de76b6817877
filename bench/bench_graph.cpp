// Heaviest-path search: the library's searcher ("tov") beside the literal reference
// ("reference", tests/graph/refpathsearcher.h) on the same graphs. Both visit exactly the same
// search steps, counted once with the reference and reported as a rate ("steps" and items/s).

#include <tovgraphedge.h>
#include <tovgraphnode.h>
#include <tovgraphstruct.h>
#include <tovpathsearcher.h>

#include "refpathsearcher.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

namespace {

struct EdgeSpec
{
    int key1, key2;
    bool in1, in2;
    int weight;
};

struct Network
{
    std::vector<int> keys;
    std::vector<EdgeSpec> edges;
};

// A road-like grid. Every node is a stretch of road whose four links are split between its two
// ends: east-west against north-south, or one of the two diagonal splits, chosen per node by a
// fixed pattern. A path leaves a node by the end it did not come in by, so it wanders, as a
// route through a street network does. Link lengths vary a little.
Network grid(int width, int height)
{
    Network net;
    const auto key = [width](int r, int c) { return r * width + c + 1; };
    // Whether a link in direction dir (0 W, 1 E, 2 N, 3 S) sits on the in side of node (r, c).
    const auto inSide = [](int r, int c, int dir) {
        switch ((r * 3 + c * 5 + r * c) % 3) {
        case 0:
            return dir == 0 || dir == 1; // east-west | north-south
        case 1:
            return dir == 0 || dir == 2; // west, north | east, south
        default:
            return dir == 0 || dir == 3; // west, south | east, north
        }
    };
    for (int r = 0; r < height; ++r) {
        for (int c = 0; c < width; ++c) {
            net.keys.push_back(key(r, c));
            if (c + 1 < width)
                net.edges.push_back({ key(r, c), key(r, c + 1), inSide(r, c, 1), inSide(r, c + 1, 0),
                    1 + (r * 7 + c * 3) % 4 });
            if (r + 1 < height)
                net.edges.push_back({ key(r, c), key(r + 1, c), inSide(r, c, 3), inSide(r + 1, c, 2),
                    1 + (r * 5 + c * 11) % 4 });
        }
    }
    return net;
}

// A ladder of two rails joined by rungs; rail links run out side to in side, rungs join the two
// rails' in sides, so a path may cross at every rung or stay on its rail.
Network ladder(int rungs)
{
    Network net;
    const auto key = [](int rail, int i) { return rail * 100000 + i + 1; };
    for (int i = 0; i < rungs; ++i) {
        for (int rail = 0; rail < 2; ++rail) {
            net.keys.push_back(key(rail, i));
            if (i + 1 < rungs)
                net.edges.push_back({ key(rail, i), key(rail, i + 1), false, true, 1 + (i + rail) % 3 });
        }
        net.edges.push_back({ key(0, i), key(1, i), true, true, 2 });
    }
    return net;
}

void fill(const Network &net, TovGraphStruct &graph)
{
    for (int k : net.keys)
        graph.addNode(k)->setWeight(1);
    for (const EdgeSpec &e : net.edges)
        graph.addEdge(e.key1, e.key2, e.in1, e.in2)->setWeight(e.weight);
}

void fill(const Network &net, ref::Graph &graph)
{
    for (int k : net.keys)
        graph.addNode(k)->weight = 1;
    for (const EdgeSpec &e : net.edges)
        graph.addEdge(e.key1, e.key2, e.in1, e.in2)->weight = e.weight;
}

enum class Entry
{
    TwoNode,
    KeyList,
    OneNode
};

struct Scenario
{
    Network net;
    Entry entry;
    int start = 0;
    int end = 0;
    QList<int> keys;
};

template<class Searcher, class Graph>
int runOnce(const Scenario &s, Searcher &searcher, Graph &graph)
{
    std::vector<int> path;
    int weight = 0;
    switch (s.entry) {
    case Entry::TwoNode:
        searcher.searchPath(path, weight, &graph, s.start, s.end, int(s.net.keys.size()));
        break;
    case Entry::KeyList:
        searcher.searchPath(s.keys, path, &graph, true);
        weight = int(path.size());
        break;
    case Entry::OneNode:
        searcher.searchPath(path, weight, &graph, s.start, true);
        break;
    }
    return weight + int(path.size());
}

// Search steps of one run, counted by the reference.
long long stepsOf(const Scenario &s)
{
    ref::Graph graph;
    fill(s.net, graph);
    ref::PathSearcher searcher;
    runOnce(s, searcher, graph);
    return searcher.steps;
}

void report(benchmark::State &state, long long steps)
{
    state.counters["steps"]
        = benchmark::Counter(double(steps), benchmark::Counter::kIsIterationInvariantRate);
    state.SetItemsProcessed(state.iterations() * steps);
}

void benchTov(benchmark::State &state, const Scenario &s)
{
    TovGraphStruct graph;
    fill(s.net, graph);
    TovPathSearcher searcher;
    const long long steps = stepsOf(s);
    for (auto _ : state)
        benchmark::DoNotOptimize(runOnce(s, searcher, graph));
    report(state, steps);
}

void benchReference(benchmark::State &state, const Scenario &s)
{
    ref::Graph graph;
    fill(s.net, graph);
    ref::PathSearcher searcher;
    long long steps = 0;
    for (auto _ : state) {
        searcher.steps = 0;
        benchmark::DoNotOptimize(runOnce(s, searcher, graph));
        steps = searcher.steps;
    }
    report(state, steps);
}

Scenario twoNodeGrid(int n)
{
    return { grid(n, n), Entry::TwoNode, 1, n * n, {} };
}

Scenario keyListGrid(int n)
{
    // The four corners and the centre, the keys a caller wants covered.
    return { grid(n, n), Entry::KeyList, 0, 0, { 1, n, (n / 2) * n + n / 2 + 1, n * (n - 1) + 1, n * n } };
}

Scenario oneNodeLadder(int rungs)
{
    return { ladder(rungs), Entry::OneNode, rungs / 2 + 1, 0, {} };
}

void registerCase(const char *name, const Scenario &s)
{
    benchmark::RegisterBenchmark((std::string(name) + "/tov").c_str(), [s](benchmark::State &state) {
        benchTov(state, s);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((std::string(name) + "/reference").c_str(), [s](benchmark::State &state) {
        benchReference(state, s);
    })->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char **argv)
{
    registerCase("TwoNodeGrid6x6", twoNodeGrid(6));
    registerCase("TwoNodeGrid7x7", twoNodeGrid(7));
    registerCase("KeyListGrid6x6", keyListGrid(6));
    registerCase("KeyListGrid7x7", keyListGrid(7));
    registerCase("OneNodeLadder40", oneNodeLadder(40));
    registerCase("OneNodeLadder400", oneNodeLadder(400));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
