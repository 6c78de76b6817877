#pragma once

#include "tovgeneralutility_export.h"

#include <QList>

#include <functional>
#include <memory>
#include <set>
#include <vector>

class QElapsedTimer;
class TovGraphEdge;
class TovGraphNode;
class TovGraphStruct;
class TovPathSearchPlan;

// Exhaustive search for the simple path of greatest total node weight in a TovGraphStruct.
// A path entering a node on one side leaves it on the other. Among paths of equal weight the
// smaller sum of edge weights wins, then the first found (cheaper edge first, then lower key).
// Searches set node flags on the current path and restore them; nodes whose flag the caller set
// non-zero are never entered, except the start node, whose flag a search leaves at 0. The graph
// must not change during a search (a predicate must not edit it).
class TOVGENERALUTILITY_EXPORT TovPathSearcher
{
public:
    using PathValidFunc = std::function<bool(const int &, const bool &)>;

    TovPathSearcher();
    TovPathSearcher(const TovPathSearcher &other);
    TovPathSearcher &operator=(const TovPathSearcher &other);
    virtual ~TovPathSearcher();

    // Keys to prefer: where some edge of a side leads to one, only such edges are followed.
    void setKeyPathCandidate(const std::set<int> &keys);
    // Forbids leaving a node (key) from a side (isIn); empty means every node is valid.
    void setPathValidFunc(PathValidFunc func);
    // Milliseconds; below 1 no new time limit is started. Two-node searches start the limit; once
    // it has passed (and the best weight seen is not exactly 1) the stop weight drops to the best
    // weight seen. A limit still running when a one-node search begins applies to it as well.
    void setTimeout(int ms);

    // Best path from startKey to endKey. path and weight are replaced only by a heavier path,
    // or an equally heavy one with a smaller edge sum than any found in this call. Missing
    // nodes leave them untouched. Once stopWeight is reached only cheaper paths are searched.
    void searchPath(std::vector<int> &path, int &weight, TovGraphStruct *graph, const int &startKey,
        const int &endKey, const int &stopWeight);
    // Best path starting at startKey and running as far as it can; with bothWays, the best path
    // through startKey in both directions. Replaces path and weight only by a heavier path. Both
    // ways, the halves are searched independently (they may share nodes) and the start's weight
    // is taken off once from their sum, even when a half is empty.
    void searchPath(std::vector<int> &path, int &weight, TovGraphStruct *graph, const int &startKey,
        const bool &bothWays);
    // A path covering as many of keys as possible (node weights 1 on the wanted nodes): the best
    // two-node path over every pair, stopping once one weighs keys.size(); falls back to keys'
    // first key. With keysAreCandidates the keys become the key path candidates. path is
    // appended to, not cleared: pass it empty.
    void searchPath(
        const QList<int> &keys, std::vector<int> &path, TovGraphStruct *graph, bool keysAreCandidates);
    // The same, on the groups of keys sharing a region, largest first, up to the first that
    // yields a path; with no such group, keys' first key.
    void searchPathByRegion(
        const QList<int> &keys, std::vector<int> &path, TovGraphStruct *graph, bool keysAreCandidates);

protected:
    // The depth-first search from node, leaving it by side isIn, towards target (or as far as it
    // can when target is null), recording into bestPath, bestWeight and bestScore.
    void doSearchPath(std::vector<int> &bestPath, int &bestWeight, int &bestScore, TovGraphNode *node,
        TovGraphNode *target, const bool &isIn);
    bool pathValid(const int &key, const bool &isIn) const;
    // Whether an edge of that side leads to a key path candidate.
    bool existAdjacentKey(TovGraphNode *node, const bool &isIn) const;
    // Keeps only the edges leading to key path candidates, when there is any.
    void simplifyEdges(TovGraphNode *node, std::vector<TovGraphEdge *> &edges) const;

private:
    friend class TovPathSearchRun;

    std::unique_ptr<TovPathSearchPlan> takePlan();
    void searchPair(TovPathSearchPlan &plan, std::vector<int> &path, int &weight, TovGraphStruct *graph,
        int startKey, int endKey, int stopWeight);
    void runSearch(TovPathSearchPlan &plan, std::vector<int> &bestPath, int &bestWeight, int &bestScore,
        TovGraphNode *node, TovGraphNode *target, bool isIn);

    std::set<int> m_keyPathCandidates;
    // The path stack itself lives in the search plan, sized when the plan is built.
    int m_currentWeight = 0;
    int m_currentScore = 0;
    int m_stopWeight = 0;
    PathValidFunc m_pathValidFunc;
    int m_timeout = 0;
    QElapsedTimer *m_timer = nullptr;
    int m_bestWeightSeen = 0;
    std::unique_ptr<TovPathSearchPlan> m_plan; // storage kept for the next search, not copied
};
