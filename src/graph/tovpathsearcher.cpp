#include "tovpathsearcher.h"
#include "tovgraphedge.h"
#include "tovgraphnode.h"
#include "tovgraphrevision_p.h"
#include "tovgraphstruct.h"
#include "tovpathsearcher_p.h"

#include <QElapsedTimer>

#include <algorithm>
#include <atomic>
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

std::atomic<unsigned long long> planStamps { 0 };

} // namespace

bool TovPathSearchPlan::contains(const TovGraphNode *node) const
{
    return node->m_planStamp == m_stamp && node->m_planIndex < int(graphNodes.size())
        && graphNodes[node->m_planIndex] == node;
}

bool TovPathSearchPlan::isCurrentFor(const TovGraphNode *node) const
{
    // The revision first: only while it holds are the node pointers of the image alive.
    return m_revision == TovGraphRevision::current() && contains(node);
}

int TovPathSearchPlan::indexOf(const TovGraphNode *node) const
{
    return node->m_planIndex;
}

void TovPathSearchPlan::clear()
{
    graphNodes.clear();
    m_revision = 0;
}

void TovPathSearchPlan::build(TovGraphNode *start, const std::set<int> &candidates)
{
    // Every build takes a fresh stamp: nodes of an earlier image no longer count as members.
    m_stamp = ++planStamps;
    // Marked current only once complete, so that a build cut short is never searched.
    const unsigned long long revision = TovGraphRevision::current();
    m_revision = 0;
    if (m_candidates != candidates)
        m_candidates = candidates;
    nodes.clear();
    arcs.clear();
    graphNodes.clear();
    const auto admit = [this](TovGraphNode *node) {
        node->m_planStamp = m_stamp;
        node->m_planIndex = int(graphNodes.size());
        graphNodes.push_back(node);
        return node->m_planIndex;
    };
    admit(start);
    // Breadth-first over the edges the search can follow: a node is admitted when an arc first
    // leads to it, and its own arcs are laid out when its turn comes.
    std::vector<const TovGraphEdge *> &edges = m_edges;
    for (std::size_t head = 0; head < graphNodes.size(); ++head) {
        const TovGraphNode *node = graphNodes[head];
        const int key = node->getKey();
        Node entry { key, node->getWeight(), { 0, 0, 0 } };
        for (const bool isIn : { false, true }) {
            const auto &side = node->side(isIn);
            const bool anyCandidate = !candidates.empty()
                && std::any_of(side.begin(), side.end(),
                    [&](const std::pair<int, TovGraphEdge *> &e) { return candidates.count(e.first) != 0; });
            edges.clear();
            for (const auto &e : side) {
                if (!anyCandidate || candidates.count(e.first) != 0)
                    edges.push_back(e.second);
            }
            // Stable by weight: equal weights keep ascending neighbour keys. Degrees are small,
            // an insertion sort does it without allocating.
            for (std::size_t j = 1; j < edges.size(); ++j) {
                const TovGraphEdge *moving = edges[j];
                std::size_t k = j;
                for (; k > 0 && edges[k - 1]->getWeight() > moving->getWeight(); --k)
                    edges[k] = edges[k - 1];
                edges[k] = moving;
            }
            entry.arcs[isIn] = int(arcs.size());
            for (const TovGraphEdge *edge : edges) {
                TovGraphNode *far = farNode(edge, key);
                const int index = contains(far) ? far->m_planIndex : admit(far);
                arcs.push_back({ index * 2 + int(goOnSide(edge, key)), edge->getWeight() });
            }
        }
        entry.arcs[2] = int(arcs.size());
        nodes.push_back(entry);
    }
    // Scratch of the runs: every element is written before it is read.
    flags.resize(nodes.size());
    best.resize(nodes.size() + 1);
    frames.resize(nodes.size() + 2);
    m_revision = revision;
}

// One depth-first run over a plan, iterative so that long paths cannot exhaust the call stack.
// It visits, checks and records exactly in the order of the recursive description. All state
// lives in locals so that it stays in registers.
class TovPathSearchRun
{
public:
    template<bool HasTarget, bool HasPredicate>
    static void run(TovPathSearcher &s, TovPathSearchPlan &plan, int start, bool startIn, int targetKey,
        std::vector<int> &bestPath, int &bestWeightOut, int &bestScoreOut)
    {
        const TovPathSearchPlan::Node *const nodes = plan.nodes.data();
        const TovPathSearchPlan::Arc *const arcs = plan.arcs.data();
        TovGraphNode *const *const graphNodes = plan.graphNodes.data();
        unsigned char *const flags = plan.flags.data();
        int *const best = plan.best.data();
        // frames[0] stands for the empty path; the path's nodes are frames[1] to frame, and a node
        // entered without edges to follow sits just above frame until it is left again.
        TovPathSearchPlan::Frame *const root = plan.frames.data();
        const int nodeCount = int(plan.nodes.size());
        // Flags are read from this mirror. With a predicate they are written through to the
        // nodes as well, where it may look at them; without one nothing can see them before
        // the run has put every flag back.
        for (int i = 0; i < nodeCount; ++i)
            flags[i] = graphNodes[i]->getFlag() != 0;
        const auto setFlag = [&](int index, int value) {
            flags[index] = static_cast<unsigned char>(value);
            if (HasPredicate)
                graphNodes[index]->setFlag(value);
        };

        const TovPathSearcher::PathValidFunc &pathValid = s.m_pathValidFunc;
        QElapsedTimer *timer = s.m_timer;
        const qint64 timeout = s.m_timeout;
        // best[0, bestLength) is the path last recorded; the keys up to unchanged have not
        // changed since, so a record copies only the rest.
        int bestLength = 0;
        TovPathSearchPlan::Frame *frame = root;
        const TovPathSearchPlan::Frame *unchanged = root;
        bool recorded = false;
        int curWeight = s.m_currentWeight;
        int curScore = s.m_currentScore;
        int bestWeight = bestWeightOut;
        int bestScore = bestScoreOut;
        int stopWeight = s.m_stopWeight;
        int bestWeightSeen = s.m_bestWeightSeen;
        bool atStop = bestWeight == stopWeight; // only cheaper paths are searched

        // Records the path ending at last if it is the best yet.
        const auto record = [&](const TovPathSearchPlan::Frame *last) {
            if (curWeight > bestWeight || (curWeight == bestWeight && curScore > bestScore)) {
                for (const TovPathSearchPlan::Frame *f = unchanged + 1; f <= last; ++f)
                    best[f - root - 1] = f->key;
                bestLength = int(last - root);
                unchanged = last;
                recorded = true;
                bestWeight = curWeight;
                bestScore = curScore;
                atStop = bestWeight == stopWeight;
            }
        };
        // The path has lost the node above frame, of that weight.
        const auto pop = [&](int weight) {
            curWeight -= weight;
            if (frame < unchanged)
                unchanged = frame;
        };

        // The current frame's scan position and end stay in registers; a frame's own copies are
        // written when a child is entered and read back when the child's frame is popped. Whether
        // the current frame has entered a child is known on return from one: it stays in a
        // register too.
        int pos = 0;
        int end = 0;
        bool taken = false;
        // Steps 1 to 4 for the node index, left by side isIn. True when the node got a frame and
        // its scan begins; false when the path is back to the current frame at once.
        const auto enter = [&](int index, bool isIn) {
            const TovPathSearchPlan::Node &node = nodes[index];
            if (HasPredicate && !pathValid(node.key, isIn)) {
                if (!HasTarget)
                    record(frame);
                return false;
            }
            frame[1].key = node.key;
            curWeight += node.weight;
            const int begin = node.arcs[isIn];
            const int stop = node.arcs[isIn + 1];
            if (HasTarget ? node.key != targetKey : begin != stop) {
                ++frame;
                frame->weight = node.weight;
                pos = begin;
                end = stop;
                taken = false;
                return true;
            }
            record(frame + 1);
            pop(node.weight);
            return false;
        };

        if (enter(start, startIn)) {
            for (;;) {
                while (pos < end) {
                    const TovPathSearchPlan::Arc &arc = arcs[pos++];
                    const int far = arc.farSide >> 1;
                    if (flags[far] != 0)
                        continue;
                    // The best weight seen matters only while a limit runs: a new one starts from 0.
                    if (timer) {
                        if (bestWeight > bestWeightSeen)
                            bestWeightSeen = bestWeight;
                        // A best weight of exactly 1 never lets the limit fire: keep that exemption.
                        if (bestWeightSeen >= 0 && bestWeightSeen != 1 && timer->elapsed() > timeout) {
                            stopWeight = bestWeightSeen;
                            atStop = bestWeight == stopWeight;
                            delete timer;
                            timer = nullptr;
                            s.m_timer = nullptr;
                        }
                    }
                    const int arcWeight = arc.weight;
                    if (atStop && bestScore > curScore - arcWeight)
                        continue;
                    frame->pos = pos;
                    frame->end = end;
                    frame->followedFar = far;
                    frame->followedWeight = arcWeight;
                    curScore -= arcWeight;
                    setFlag(far, 1);
                    if (!enter(far, arc.farSide & 1)) {
                        setFlag(far, 0);
                        curScore += arcWeight;
                        taken = true;
                    }
                }
                if (!HasTarget && !taken)
                    record(frame);
                const int weight = frame->weight;
                --frame;
                pop(weight);
                if (frame == root)
                    break;
                setFlag(frame->followedFar, 0);
                curScore += frame->followedWeight;
                pos = frame->pos;
                end = frame->end;
                taken = true;
            }
        }

        if (recorded)
            bestPath.assign(best, best + bestLength);
        bestWeightOut = bestWeight;
        bestScoreOut = bestScore;
        s.m_currentWeight = curWeight;
        s.m_currentScore = curScore;
        s.m_stopWeight = stopWeight;
        s.m_bestWeightSeen = bestWeightSeen;
    }
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
{ }

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
    // The side maps hold the neighbour keys: no edge needs to be looked at.
    const auto &side = node->side(isIn);
    return std::any_of(side.begin(), side.end(), [this](const std::pair<int, TovGraphEdge *> &entry) {
        return m_keyPathCandidates.count(entry.first) != 0;
    });
}

void TovPathSearcher::simplifyEdges(TovGraphNode *node, std::vector<TovGraphEdge *> &edges) const
{
    const int key = node->getKey();
    const auto isCandidate = [this, key](const TovGraphEdge *edge) {
        return m_keyPathCandidates.count(farNode(edge, key)->getKey()) != 0;
    };
    if (std::any_of(edges.begin(), edges.end(), isCandidate))
        edges.erase(std::remove_if(
                        edges.begin(), edges.end(), [&](const TovGraphEdge *e) { return !isCandidate(e); }),
            edges.end());
}

void TovPathSearcher::doSearchPath(std::vector<int> &bestPath, int &bestWeight, int &bestScore,
    TovGraphNode *node, TovGraphNode *target, const bool &isIn)
{
    std::unique_ptr<TovPathSearchPlan> plan = takePlan();
    runSearch(*plan, bestPath, bestWeight, bestScore, node, target, isIn);
    m_plan = std::move(plan);
}

std::unique_ptr<TovPathSearchPlan> TovPathSearcher::takePlan()
{
    // Taken, not borrowed: a search started from inside a predicate gets a plan of its own.
    std::unique_ptr<TovPathSearchPlan> plan = std::move(m_plan);
    if (!plan)
        plan.reset(new TovPathSearchPlan);
    else if (plan->candidates() != m_keyPathCandidates)
        plan->clear();
    return plan;
}

void TovPathSearcher::runSearch(TovPathSearchPlan &plan, std::vector<int> &bestPath, int &bestWeight,
    int &bestScore, TovGraphNode *node, TovGraphNode *target, bool isIn)
{
    if (!plan.isCurrentFor(node))
        plan.build(node, m_keyPathCandidates);
    const int start = plan.indexOf(node);
    const int targetKey = target ? target->getKey() : 0;
    const bool predicate = bool(m_pathValidFunc);
    if (target && predicate)
        TovPathSearchRun::run<true, true>(
            *this, plan, start, isIn, targetKey, bestPath, bestWeight, bestScore);
    else if (target)
        TovPathSearchRun::run<true, false>(
            *this, plan, start, isIn, targetKey, bestPath, bestWeight, bestScore);
    else if (predicate)
        TovPathSearchRun::run<false, true>(
            *this, plan, start, isIn, targetKey, bestPath, bestWeight, bestScore);
    else
        TovPathSearchRun::run<false, false>(
            *this, plan, start, isIn, targetKey, bestPath, bestWeight, bestScore);
}

void TovPathSearcher::searchPair(TovPathSearchPlan &plan, std::vector<int> &path, int &weight,
    TovGraphStruct *graph, int startKey, int endKey, int stopWeight)
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

void TovPathSearcher::searchPath(std::vector<int> &path, int &weight, TovGraphStruct *graph,
    const int &startKey, const int &endKey, const int &stopWeight)
{
    std::unique_ptr<TovPathSearchPlan> plan = takePlan();
    searchPair(*plan, path, weight, graph, startKey, endKey, stopWeight);
    m_plan = std::move(plan);
}

void TovPathSearcher::searchPath(
    std::vector<int> &path, int &weight, TovGraphStruct *graph, const int &startKey, const bool &bothWays)
{
    m_stopWeight = INT_MAX;
    TovGraphNode *start = graph->findNode(startKey);
    if (!start)
        return;
    std::unique_ptr<TovPathSearchPlan> plan = takePlan();
    std::vector<int> &pathA = plan->halves[0];
    std::vector<int> &pathB = plan->halves[1];
    pathA.clear();
    pathB.clear();
    int weightA = 0;
    int scoreA = 0;
    int weightB = 0;
    int scoreB = 0;
    start->setFlag(1);
    m_currentWeight = 0;
    m_currentScore = 0;
    runSearch(*plan, pathA, weightA, scoreA, start, nullptr, true);
    m_currentWeight = 0;
    m_currentScore = 0;
    runSearch(*plan, pathB, weightB, scoreB, start, nullptr, false);
    start->setFlag(0);
    m_plan = std::move(plan); // pathA and pathB live on in it

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

void TovPathSearcher::searchPath(
    const QList<int> &keys, std::vector<int> &path, TovGraphStruct *graph, bool keysAreCandidates)
{
    // True when a pair search found a path worth keeping; false leads to the fallback.
    const auto searchPairs = [&]() {
        if (keysAreCandidates)
            m_keyPathCandidates = std::set<int>(keys.begin(), keys.end());
        int weight = 0;
        int stopWeight = keys.size();
        std::unique_ptr<TovPathSearchPlan> plan = takePlan();
        for (int i = 0; i < keys.size(); ++i) {
            for (int j = i + 1; j < keys.size(); ++j) {
                searchPair(*plan, path, weight, graph, keys.at(i), keys.at(j), stopWeight);
                stopWeight = m_stopWeight; // a timeout may have lowered it
                if (weight == stopWeight) {
                    m_plan = std::move(plan);
                    return weight != 0;
                }
            }
        }
        m_plan = std::move(plan);
        return weight != 0;
    };
    if (keys.size() >= 2 && searchPairs())
        return;
    if (!keys.isEmpty())
        path.push_back(keys.first());
}

void TovPathSearcher::searchPathByRegion(
    const QList<int> &keys, std::vector<int> &path, TovGraphStruct *graph, bool keysAreCandidates)
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
