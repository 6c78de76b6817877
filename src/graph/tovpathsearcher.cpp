#include "tovpathsearcher.h"
#include "tovgraphedge.h"
#include "tovgraphnode.h"
#include "tovgraphstruct.h"
#include "tovpathsearcher_p.h"

#include <QElapsedTimer>

#include <algorithm>
#include <climits>

namespace {

// The far end of an edge seen from a node: the endpoint whose key differs from the node's.
inline TovGraphNode *farNode(const TovGraphEdge *edge, int key)
{
    return edge->getNode1()->getKey() != key ? edge->getNode1() : edge->getNode2();
}

// The side by which a path leaves the far node: opposite to the side the edge sits on there.
inline bool goOnSide(const TovGraphEdge *edge, int key)
{
    return edge->getNode1()->getKey() != key ? !edge->IsInEdge1() : !edge->IsInEdge2();
}

} // namespace

void TovPathSearchPlan::build(TovGraphNode *start, const std::set<int> &candidates)
{
    nodes.clear();
    arcs.clear();
    index.clear();
    std::vector<TovGraphNode *> queue{start};
    index.emplace(start, 0);
    for (std::size_t head = 0; head < queue.size(); ++head) {
        TovGraphNode *node = queue[head];
        for (const bool isIn : {true, false}) {
            for (TovGraphEdge *edge : node->getEdges(isIn)) {
                TovGraphNode *far = farNode(edge, node->getKey());
                if (index.emplace(far, int(queue.size())).second)
                    queue.push_back(far);
            }
        }
    }
    nodes.resize(queue.size());
    std::vector<TovGraphEdge *> edges;
    for (std::size_t i = 0; i < queue.size(); ++i) {
        TovGraphNode *node = queue[i];
        Node &entry = nodes[i];
        entry.node = node;
        entry.key = node->getKey();
        entry.weight = node->getWeight();
        for (const bool isIn : {false, true}) {
            edges = node->getEdges(isIn);
            const bool anyCandidate = std::any_of(edges.begin(), edges.end(), [&](const TovGraphEdge *e) {
                return candidates.count(farNode(e, entry.key)->getKey()) != 0;
            });
            if (anyCandidate) {
                edges.erase(std::remove_if(edges.begin(), edges.end(),
                                           [&](const TovGraphEdge *e) {
                                               return candidates.count(farNode(e, entry.key)->getKey()) == 0;
                                           }),
                            edges.end());
            }
            std::stable_sort(edges.begin(), edges.end(), [](const TovGraphEdge *a, const TovGraphEdge *b) {
                return a->getWeight() < b->getWeight();
            });
            entry.arcBegin[isIn] = int(arcs.size());
            for (const TovGraphEdge *edge : edges)
                arcs.push_back({index.at(farNode(edge, entry.key)), edge->getWeight(), goOnSide(edge, entry.key)});
            entry.arcEnd[isIn] = int(arcs.size());
        }
    }
    path.assign(nodes.size() + 1, 0);
    best.assign(nodes.size() + 1, 0);
    frames.assign(nodes.size() + 1, Frame());
}

// One depth-first run over a plan, iterative so that long paths cannot exhaust the call stack.
// It visits, checks and records exactly in the order of the recursive description.
class TovPathSearchRun
{
public:
    TovPathSearchRun(TovPathSearcher &searcher, TovPathSearchPlan &plan, int bestWeight, int bestScore)
        : s(searcher)
        , nodes(plan.nodes.data())
        , arcs(plan.arcs.data())
        , path(plan.path.data())
        , best(plan.best.data())
        , frames(plan.frames.data())
        , curWeight(searcher.m_currentWeight)
        , curScore(searcher.m_currentScore)
        , bestWeight(bestWeight)
        , bestScore(bestScore)
        , stopWeight(searcher.m_stopWeight)
        , bestWeightSeen(searcher.m_bestWeightSeen)
    {
    }

    template<bool HasTarget, bool HasPredicate>
    void run(int start, bool isIn, int targetKey)
    {
        if (!enter<HasTarget, HasPredicate>(start, isIn, targetKey))
            return;
        while (top > 0) {
            TovPathSearchPlan::Frame &frame = frames[top - 1];
            bool descended = false;
            while (frame.pos < frame.end) {
                const TovPathSearchPlan::Arc &arc = arcs[frame.pos++];
                TovGraphNode *far = nodes[arc.far].node;
                if (far->getFlag() != 0)
                    continue;
                timeCheck();
                if (bestWeight == stopWeight && bestScore > curScore - arc.weight)
                    continue;
                frame.taken = true;
                curScore -= arc.weight;
                far->setFlag(1);
                if (enter<HasTarget, HasPredicate>(arc.far, arc.goOnIn, targetKey)) {
                    frame.pendingFar = arc.far;
                    frame.pendingWeight = arc.weight;
                    descended = true;
                    break;
                }
                far->setFlag(0);
                curScore += arc.weight;
            }
            if (descended)
                continue;
            if (!HasTarget && !frame.taken)
                record();
            curWeight -= nodes[frame.node].weight;
            --depth;
            if (--top > 0) {
                const TovPathSearchPlan::Frame &parent = frames[top - 1];
                nodes[parent.pendingFar].node->setFlag(0);
                curScore += parent.pendingWeight;
            }
        }
    }

    // Hands the results back; bestPath changes only when something was recorded.
    void finish(std::vector<int> &bestPath, int &outWeight, int &outScore)
    {
        if (recorded)
            bestPath.assign(best, best + bestLength);
        outWeight = bestWeight;
        outScore = bestScore;
        s.m_currentWeight = curWeight;
        s.m_currentScore = curScore;
        s.m_stopWeight = stopWeight;
        s.m_bestWeightSeen = bestWeightSeen;
    }

private:
    template<bool HasTarget, bool HasPredicate>
    bool enter(int index, bool isIn, int targetKey)
    {
        const TovPathSearchPlan::Node &node = nodes[index];
        if (HasPredicate && !s.m_pathValidFunc(node.key, isIn)) {
            if (!HasTarget)
                record();
            return false;
        }
        path[depth++] = node.key;
        curWeight += node.weight;
        if (HasTarget && node.key == targetKey) {
            record();
            curWeight -= node.weight;
            --depth;
            return false;
        }
        const int begin = node.arcBegin[isIn];
        const int end = node.arcEnd[isIn];
        if (!HasTarget && begin == end) {
            record();
            curWeight -= node.weight;
            --depth;
            return false;
        }
        frames[top++] = {index, begin, end, -1, 0, false};
        return true;
    }

    void record()
    {
        if (curWeight > bestWeight || (curWeight == bestWeight && curScore > bestScore)) {
            std::copy(path, path + depth, best);
            bestLength = depth;
            recorded = true;
            bestWeight = curWeight;
            bestScore = curScore;
        }
    }

    void timeCheck()
    {
        if (bestWeight > bestWeightSeen)
            bestWeightSeen = bestWeight;
        // A best weight of exactly 1 never lets the limit fire: keep that exemption.
        if (bestWeightSeen < 0 || bestWeightSeen == 1 || !s.m_timer)
            return;
        if (s.m_timer->elapsed() > s.m_timeout) {
            stopWeight = bestWeightSeen;
            delete s.m_timer;
            s.m_timer = nullptr;
        }
    }

    TovPathSearcher &s;
    const TovPathSearchPlan::Node *nodes;
    const TovPathSearchPlan::Arc *arcs;
    int *path;
    int *best;
    TovPathSearchPlan::Frame *frames;
    int depth = 0;
    int top = 0;
    int bestLength = 0;
    bool recorded = false;
    int curWeight;
    int curScore;
    int bestWeight;
    int bestScore;
    int stopWeight;
    int bestWeightSeen;
};

TovPathSearcher::TovPathSearcher() = default;

TovPathSearcher::TovPathSearcher(const TovPathSearcher &other)
    : m_keyPathCandidates(other.m_keyPathCandidates)
    , m_currentWeight(other.m_currentWeight)
    , m_currentScore(other.m_currentScore)
    , m_stopWeight(other.m_stopWeight)
    , m_pathValidFunc(other.m_pathValidFunc)
    , m_timeout(other.m_timeout)
    , m_timer(other.m_timer ? new QElapsedTimer(*other.m_timer) : nullptr)
    , m_bestWeightSeen(other.m_bestWeightSeen)
{
}

TovPathSearcher &TovPathSearcher::operator=(const TovPathSearcher &other)
{
    if (this == &other)
        return *this;
    m_keyPathCandidates = other.m_keyPathCandidates;
    m_currentWeight = other.m_currentWeight;
    m_currentScore = other.m_currentScore;
    m_stopWeight = other.m_stopWeight;
    m_pathValidFunc = other.m_pathValidFunc;
    m_timeout = other.m_timeout;
    delete m_timer;
    m_timer = other.m_timer ? new QElapsedTimer(*other.m_timer) : nullptr;
    m_bestWeightSeen = other.m_bestWeightSeen;
    return *this;
}

TovPathSearcher::~TovPathSearcher()
{
    delete m_timer;
}

void TovPathSearcher::setKeyPathCandidate(const std::set<int> &keys)
{
    m_keyPathCandidates = keys;
}

void TovPathSearcher::setPathValidFunc(PathValidFunc func)
{
    m_pathValidFunc = std::move(func);
}

void TovPathSearcher::setTimeout(int ms)
{
    m_timeout = ms;
}

bool TovPathSearcher::pathValid(const int &key, const bool &isIn) const
{
    return !m_pathValidFunc || m_pathValidFunc(key, isIn);
}

bool TovPathSearcher::existAdjacentKey(TovGraphNode *node, const bool &isIn) const
{
    for (const TovGraphEdge *edge : node->getEdges(isIn)) {
        if (m_keyPathCandidates.count(farNode(edge, node->getKey())->getKey()) != 0)
            return true;
    }
    return false;
}

void TovPathSearcher::simplifyEdges(TovGraphNode *node, std::vector<TovGraphEdge *> &edges) const
{
    const int key = node->getKey();
    const auto isCandidate = [this, key](const TovGraphEdge *edge) {
        return m_keyPathCandidates.count(farNode(edge, key)->getKey()) != 0;
    };
    if (std::any_of(edges.begin(), edges.end(), isCandidate))
        edges.erase(std::remove_if(edges.begin(), edges.end(), [&](const TovGraphEdge *e) { return !isCandidate(e); }),
                    edges.end());
}

void TovPathSearcher::doSearchPath(std::vector<int> &bestPath, int &bestWeight, int &bestScore, TovGraphNode *node,
                                   TovGraphNode *target, const bool &isIn)
{
    TovPathSearchPlan plan;
    runSearch(plan, bestPath, bestWeight, bestScore, node, target, isIn);
}

void TovPathSearcher::runSearch(TovPathSearchPlan &plan, std::vector<int> &bestPath, int &bestWeight,
                                int &bestScore, TovGraphNode *node, TovGraphNode *target, bool isIn)
{
    if (!plan.contains(node))
        plan.build(node, m_keyPathCandidates);
    const int start = plan.index.at(node);
    TovPathSearchRun run(*this, plan, bestWeight, bestScore);
    const bool predicate = bool(m_pathValidFunc);
    if (target) {
        if (predicate)
            run.run<true, true>(start, isIn, target->getKey());
        else
            run.run<true, false>(start, isIn, target->getKey());
    } else {
        if (predicate)
            run.run<false, true>(start, isIn, 0);
        else
            run.run<false, false>(start, isIn, 0);
    }
    run.finish(bestPath, bestWeight, bestScore);
}

void TovPathSearcher::searchPair(TovPathSearchPlan &plan, std::vector<int> &path, int &weight, TovGraphStruct *graph,
                                 int startKey, int endKey, int stopWeight)
{
    m_currentWeight = 0;
    m_currentScore = 0;
    m_stopWeight = stopWeight;
    int bestScore = 0;
    TovGraphNode *start = graph->findNode(startKey);
    TovGraphNode *end = graph->findNode(endKey);
    if (!start || !end)
        return;
    if (m_timeout >= 1 && !m_timer)
        m_timer = new QElapsedTimer;
    if (m_timer) {
        m_bestWeightSeen = 0;
        m_timer->start();
    }
    const bool inAdjacent = existAdjacentKey(start, true);
    const bool outAdjacent = existAdjacentKey(start, false);
    const bool firstSide = inAdjacent || !outAdjacent;
    start->setFlag(1);
    runSearch(plan, path, weight, bestScore, start, end, firstSide);
    runSearch(plan, path, weight, bestScore, start, end, !firstSide);
    start->setFlag(0);
}

void TovPathSearcher::searchPath(std::vector<int> &path, int &weight, TovGraphStruct *graph, const int &startKey,
                                 const int &endKey, const int &stopWeight)
{
    TovPathSearchPlan plan;
    searchPair(plan, path, weight, graph, startKey, endKey, stopWeight);
}

void TovPathSearcher::searchPath(std::vector<int> &path, int &weight, TovGraphStruct *graph, const int &startKey,
                                 const bool &bothWays)
{
    m_stopWeight = INT_MAX;
    TovGraphNode *start = graph->findNode(startKey);
    if (!start)
        return;
    TovPathSearchPlan plan;
    std::vector<int> pathA;
    std::vector<int> pathB;
    int weightA = 0;
    int scoreA = 0;
    int weightB = 0;
    int scoreB = 0;
    start->setFlag(1);
    m_currentWeight = 0;
    m_currentScore = 0;
    runSearch(plan, pathA, weightA, scoreA, start, nullptr, true);
    m_currentWeight = 0;
    m_currentScore = 0;
    runSearch(plan, pathB, weightB, scoreB, start, nullptr, false);
    start->setFlag(0);

    if (!bothWays) {
        if (weightA > weight && (weightA > weightB || (weightA == weightB && scoreA >= scoreB))) {
            path = pathA;
            weight = weightA;
        } else if (weightB > weight && (weightB > weightA || (weightB == weightA && scoreB > scoreA))) {
            path = pathB;
            weight = weightB;
        }
        return;
    }
    const int joined = weightA + weightB - start->getWeight();
    if (joined <= weight)
        return;
    path.clear();
    if (pathA.size() > 1)
        path.insert(path.end(), pathA.rbegin(), pathA.rend() - 1);
    path.push_back(startKey);
    if (pathB.size() > 1)
        path.insert(path.end(), pathB.begin() + 1, pathB.end());
    weight = joined;
}

void TovPathSearcher::searchPath(const QList<int> &keys, std::vector<int> &path, TovGraphStruct *graph,
                                 bool keysAreCandidates)
{
    // True when a pair search found a path worth keeping; false leads to the fallback.
    const auto searchPairs = [&]() {
        if (keysAreCandidates)
            m_keyPathCandidates = std::set<int>(keys.begin(), keys.end());
        int weight = 0;
        int stopWeight = keys.size();
        TovPathSearchPlan plan;
        for (int i = 0; i < keys.size(); ++i) {
            for (int j = i + 1; j < keys.size(); ++j) {
                searchPair(plan, path, weight, graph, keys.at(i), keys.at(j), stopWeight);
                stopWeight = m_stopWeight; // a timeout may have lowered it
                if (weight == stopWeight)
                    return weight != 0;
            }
        }
        return weight != 0;
    };
    if (keys.size() >= 2 && searchPairs())
        return;
    if (!keys.isEmpty())
        path.push_back(keys.first());
}

void TovPathSearcher::searchPathByRegion(const QList<int> &keys, std::vector<int> &path, TovGraphStruct *graph,
                                         bool keysAreCandidates)
{
    if (keys.isEmpty())
        return;
    if (keys.size() >= 2) {
        QList<QList<int>> groups = graph->buildGroupKeys(keys);
        std::stable_sort(groups.begin(), groups.end(),
                         [](const QList<int> &a, const QList<int> &b) { return a.size() > b.size(); });
        for (const QList<int> &group : qAsConst(groups)) {
            if (group.size() <= 1)
                continue;
            searchPath(group, path, graph, keysAreCandidates);
            if (!path.empty())
                break;
        }
    }
    if (path.empty())
        path.push_back(keys.first());
}
