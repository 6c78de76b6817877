#pragma once

#include "tovgeneralutility_export.h"

#include <QList>
#include <QMap>
#include <QString>

#include <memory>
#include <vector>

class TovGraphEdge;
class TovGraphNode;
class TovGraphStructPrivate;

// A graph of integer-keyed two-sided nodes joined by weighted edges. The graph owns its nodes
// and edges; derived graphs create derived ones by overriding newNode and newEdge.
class TOVGENERALUTILITY_EXPORT TovGraphStruct
{
public:
    TovGraphStruct();
    // Deep copies, rebuilt through this class's own factories (no virtual dispatch in a
    // constructor): weights, flags and user data are copied, region marks are not.
    TovGraphStruct(const TovGraphStruct &other);
    TovGraphStruct &operator=(const TovGraphStruct &other);
    virtual ~TovGraphStruct();

    // The node of that key, created when missing.
    TovGraphNode *addNode(const int &key);
    // The node or null.
    TovGraphNode *findNode(const int &key) const;
    bool existNode(const int &key) const;

    // Joins key1's side isIn1 to key2's side isIn2, creating missing nodes. Answers the existing
    // edge when key1 already has one to key2 on side isIn1 (untouched), and null when the keys
    // are already neighbours otherwise, or are equal.
    TovGraphEdge *addEdge(const int &key1, const int &key2, const bool &isIn1, const bool &isIn2);
    // Detaches and deletes the edge.
    void removeEdge(TovGraphEdge *edge);
    // Deletes the node and every edge touching it; unknown keys are ignored.
    void removeNode(const int &key);
    void clear();

    std::vector<TovGraphNode *> getNodes() const;
    std::vector<int> getKeys() const;
    // Every edge, in creation order.
    const std::vector<TovGraphEdge *> &getEdges() const;

    // Connected components (sides ignored), by ascending smallest key, each in depth-first
    // discovery order. The caller deletes the inner lists; the nodes stay the graph's.
    QList<QList<TovGraphNode *> *> getRegionList();
    // Appends the unmarked nodes reachable from node to list in depth-first order (in-side
    // neighbours, then out-side ones, ascending), marking them.
    void searchRelationNode(TovGraphNode *node, QList<TovGraphNode *> &list);
    // The keys grouped by region, in region order; unknown keys are dropped, duplicates collapse.
    QList<QList<int>> buildGroupKeys(const QList<int> &keys);

    // Writes a text dump of every node and its edges; a file that cannot be opened is skipped.
    void saveToFile(const QString &filePath) const;

protected:
    virtual TovGraphNode *newNode(const int &key);
    virtual TovGraphEdge *newEdge(
        TovGraphNode *node1, TovGraphNode *node2, const bool &isIn1, const bool &isIn2);
    QList<QList<int>> doBuildGroupKeys(QMap<int, int> keys);

private:
    void copyFrom(const TovGraphStruct &other);

    std::unique_ptr<TovGraphStructPrivate> const d;
};
