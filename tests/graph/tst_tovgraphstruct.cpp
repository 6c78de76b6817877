#include <tovgraphedge.h>
#include <tovgraphnode.h>
#include <tovgraphstruct.h>
#include <tovtestutil.h>

#include "graphtestutil.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

int keyOf(int key)
{
    return key;
}
int keyOf(const TovGraphNode *node)
{
    return node->getKey();
}

// Keys, or the keys of nodes, joined by commas.
template<typename Keys>
QString keysText(const Keys &keys)
{
    QStringList texts;
    for (const auto &k : keys)
        texts << QString::number(keyOf(k));
    return texts.join(QLatin1Char(','));
}

// The graph in one line: "key:in[...]out[...]" per node, edges as neighbour keys.
QString shape(const TovGraphStruct &graph)
{
    QStringList parts;
    for (const TovGraphNode *node : graph.getNodes())
        parts << QStringLiteral("%1:in[%2]out[%3]")
                     .arg(node->getKey())
                     .arg(keysText(node->getKeys(true)), keysText(node->getKeys(false)));
    return parts.join(QLatin1Char(' '));
}

int liveNodes = 0;
int liveEdges = 0;

class CountedNode : public TovGraphNode
{
public:
    explicit CountedNode(int key)
        : TovGraphNode(key)
    {
        ++liveNodes;
    }
    ~CountedNode() override { --liveNodes; }
};

class CountedEdge : public TovGraphEdge
{
public:
    CountedEdge(TovGraphNode *a, TovGraphNode *b, bool inA, bool inB)
        : TovGraphEdge(a, b, inA, inB)
    {
        ++liveEdges;
    }
    ~CountedEdge() override { --liveEdges; }
};

class CountedGraph : public TovGraphStruct
{
protected:
    TovGraphNode *newNode(const int &key) override { return new CountedNode(key); }
    TovGraphEdge *newEdge(TovGraphNode *a, TovGraphNode *b, const bool &inA, const bool &inB) override
    {
        return new CountedEdge(a, b, inA, inB);
    }
};

} // namespace

class TestTovGraphStruct : public QObject
{
    Q_OBJECT

private slots:
    void addEdge_data();
    void addEdge();
    void refusedEdgeLeavesFirstUntouched();
    void remove_data();
    void remove();
    void regions_data();
    void regions();
    void buildGroupKeys_data();
    void buildGroupKeys();
    void dump();
    void copyIsDeepAndIndependent();
    void derivedFactoriesCreateAndGraphDeletes();
};

void TestTovGraphStruct::addEdge_data()
{
    QTest::addColumn<QString>("edges");
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QString>("shape");
    QTest::addColumn<int>("edgeCount");

    row("same edge twice returns the existing one", "1i-2o 1i-2o", QStringList { "new", "same" },
        "1:in[2]out[] 2:in[]out[1]", 1);
    row("existing edge found by key 1's side, key 2's side ignored", "1i-2o 1i-2i",
        QStringList { "new", "same" }, "1:in[2]out[] 2:in[]out[1]", 1);
    row("same neighbour on key 1's other side is refused", "1i-2o 1o-2o", QStringList { "new", "null" },
        "1:in[2]out[] 2:in[]out[1]", 1);
    row("reverse direction from the same side of key 2 finds the existing edge", "1i-2o 2o-1i",
        QStringList { "new", "same" }, "1:in[2]out[] 2:in[]out[1]", 1);
    row("reverse direction from key 2's other side is refused", "1i-2o 2i-1i", QStringList { "new", "null" },
        "1:in[2]out[] 2:in[]out[1]", 1);
    row("self-loop is refused but the node exists", "5i-5o 5o-5o", QStringList { "null", "null" },
        "5:in[]out[]", 0);
    row("neighbours kept in ascending key order on each side", "4o-9i 4o-2i 4i-7o 4o-3i",
        QStringList { "new", "new", "new", "new" },
        "2:in[4]out[] 3:in[4]out[] 4:in[7]out[2,3,9] 7:in[]out[4] 9:in[4]out[]", 4);
    row("negative keys", "-3o--1i", QStringList { "new" }, "-3:in[]out[-1] -1:in[-3]out[]", 1);
}

void TestTovGraphStruct::addEdge()
{
    QFETCH(QString, edges);
    QFETCH(QStringList, answers);
    QFETCH(QString, shape);
    QFETCH(int, edgeCount);
    TovGraphStruct graph;
    QCOMPARE(buildGraph(graph, edges), answers);
    QCOMPARE(::shape(graph), shape);
    QCOMPARE(int(graph.getEdges().size()), edgeCount);
}

void TestTovGraphStruct::refusedEdgeLeavesFirstUntouched()
{
    TovGraphStruct graph;
    TovGraphEdge *first = graph.addEdge(1, 2, true, false);
    first->setWeight(7);
    int marker = 0;
    first->setData(&marker);
    QVERIFY(!graph.addEdge(1, 2, false, false));
    QCOMPARE(graph.addEdge(1, 2, true, true), first);
    QCOMPARE(first->getWeight(), 7);
    QCOMPARE(first->data(), static_cast<void *>(&marker));
    QVERIFY(first->IsInEdge1());
    QVERIFY(!first->IsInEdge2());
    QCOMPARE(graph.findNode(2)->getEdge(1, false), first);
    QCOMPARE(graph.findNode(1)->getEdge(2, false), nullptr);
}

void TestTovGraphStruct::remove_data()
{
    QTest::addColumn<QString>("edges");
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("shape");
    QTest::addColumn<int>("edgeCount");

    row("remove edge detaches both ends", "1o-2i 2o-3i", "edge 2 3", "1:in[]out[2] 2:in[1]out[] 3:in[]out[]",
        1);
    row("remove node takes its edges on both sides", "1o-2i 2o-3i 4i-2i 1o-3o", "node 2",
        "1:in[]out[3] 3:in[]out[1] 4:in[]out[]", 1);
    row("remove unknown node changes nothing", "1o-2i", "node 9", "1:in[]out[2] 2:in[1]out[]", 1);
    row("clear empties the graph", "1o-2i 3", "clear", "", 0);
}

void TestTovGraphStruct::remove()
{
    QFETCH(QString, edges);
    QFETCH(QString, action);
    QFETCH(QString, shape);
    QFETCH(int, edgeCount);
    TovGraphStruct graph;
    buildGraph(graph, edges);
    const QStringList words = action.split(QLatin1Char(' '));
    if (words[0] == QLatin1String("edge"))
        graph.removeEdge(graph.findNode(words[1].toInt())->getEdge(words[2].toInt(), false));
    else if (words[0] == QLatin1String("node"))
        graph.removeNode(words[1].toInt());
    else
        graph.clear();
    QCOMPARE(::shape(graph), shape);
    QCOMPARE(int(graph.getEdges().size()), edgeCount);
}

void TestTovGraphStruct::regions_data()
{
    QTest::addColumn<QString>("edges");
    QTest::addColumn<QStringList>("regions");

    row("empty graph has no region", "", QStringList());
    row("isolated nodes are regions of their own, ascending", "9 3 5", QStringList { "3", "5", "9" });
    row("sides ignored: in and out neighbours join one region", "1o-2i 3i-2i 7",
        QStringList { "1,2,3", "7" });
    // From 1: in side first (5, then its neighbours depth-first), then out side (2).
    row("depth-first discovery, in side before out side", "1o-2i 5o-1i 5i-6o 2o-4i",
        QStringList { "1,5,6,2,4" });
    row("region order follows the smallest key", "8o-9i 2o-8i 4o-5i", QStringList { "2,8,9", "4,5" });
}

void TestTovGraphStruct::regions()
{
    QFETCH(QString, edges);
    QFETCH(QStringList, regions);
    TovGraphStruct graph;
    buildGraph(graph, edges);
    for (int pass = 0; pass < 2; ++pass) { // marks from the first pass must not leak into the second
        const QList<QList<TovGraphNode *> *> list = graph.getRegionList();
        QStringList got;
        for (const QList<TovGraphNode *> *region : list)
            got << keysText(*region);
        qDeleteAll(list);
        QCOMPARE(got, regions);
    }
}

void TestTovGraphStruct::buildGroupKeys_data()
{
    QTest::addColumn<QString>("edges");
    QTest::addColumn<QList<int>>("keys");
    QTest::addColumn<QString>("groups");

    const QString twoRegions = QStringLiteral("1o-2i 2o-3i 10o-11i");
    row("two regions and an unknown key: unknown dropped", twoRegions, QList<int> { 11, 99, 3, 1 }, "1,3|11");
    row("keys ordered by discovery within the region", "1o-2i 5o-1i", QList<int> { 2, 5, 1 }, "1,5,2");
    row("duplicates collapse", twoRegions, QList<int> { 2, 2, 10 }, "2|10");
    row("only unknown keys give no group", twoRegions, QList<int> { 50, 60 }, "");
    row("no keys", twoRegions, QList<int>(), "");
}

void TestTovGraphStruct::buildGroupKeys()
{
    QFETCH(QString, edges);
    QFETCH(QList<int>, keys);
    QFETCH(QString, groups);
    TovGraphStruct graph;
    buildGraph(graph, edges);
    QStringList texts;
    for (const QList<int> &group : graph.buildGroupKeys(keys))
        texts << keysText(group);
    QCOMPARE(texts.join(QLatin1Char('|')), groups);
}

void TestTovGraphStruct::dump()
{
    TovGraphStruct graph;
    buildGraph(graph, "2i-1o@5 2o-3i@-4 6");
    graph.findNode(2)->setWeight(1);
    graph.findNode(6)->setWeight(-7);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("graph.txt"));
    {
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(4000, 'x')); // longer than the dump: must be truncated
    }
    graph.saveToFile(path);
    const QString stars(50, QLatin1Char('*'));
    const QString expected = QStringLiteral("Node:Key=1,Weight=0\n"
                                            "OutEdge:Key1=2,Key2=1,IsInEdge1=1,IsInEdge2=0,Weight=5\n")
        + stars
        + QStringLiteral("\nNode:Key=2,Weight=1\n"
                         "InEdge:Key1=2,Key2=1,IsInEdge1=1,IsInEdge2=0,Weight=5\n"
                         "OutEdge:Key1=2,Key2=3,IsInEdge1=0,IsInEdge2=1,Weight=-4\n")
        + stars
        + QStringLiteral("\nNode:Key=3,Weight=0\n"
                         "InEdge:Key1=2,Key2=3,IsInEdge1=0,IsInEdge2=1,Weight=-4\n")
        + stars + QStringLiteral("\nNode:Key=6,Weight=-7\n") + stars + QStringLiteral("\n");
    QFile dumped(path);
    QVERIFY(dumped.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(dumped.readAll()), expected);

    // Unopenable targets: a directory, a file in a missing folder; nothing is written.
    graph.saveToFile(dir.path());
    graph.saveToFile(dir.filePath(QStringLiteral("missing/graph.txt")));
    QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("missing/graph.txt"))));
    QVERIFY(QFileInfo(dir.path()).isDir());
}

void TestTovGraphStruct::copyIsDeepAndIndependent()
{
    TovGraphStruct graph;
    buildGraph(graph, "3o-1i@2 1o-2i@6 9");
    graph.findNode(1)->setWeight(4);
    graph.findNode(9)->setFlag(3);
    int marker = 0;
    graph.findNode(1)->getEdge(2, false)->setData(&marker);

    TovGraphStruct copy(graph);
    TovGraphStruct assigned;
    buildGraph(assigned, "50o-51i");
    assigned = graph;
    for (TovGraphStruct *other : { &copy, &assigned }) {
        QCOMPARE(shape(*other), shape(graph));
        QCOMPARE(other->findNode(1)->getWeight(), 4);
        QCOMPARE(other->findNode(9)->getFlag(), 3);
        TovGraphEdge *edge = other->findNode(1)->getEdge(2, false);
        QVERIFY(edge != graph.findNode(1)->getEdge(2, false));
        QCOMPARE(edge->getWeight(), 6);
        QCOMPARE(edge->data(), static_cast<void *>(&marker));
        QCOMPARE(edge->getNode1(), other->findNode(1));
        QCOMPARE(other->getEdges().front()->getNode1()->getKey(), 3); // creation order kept
    }
    graph.removeNode(1);
    QVERIFY(copy.findNode(1)->hasEdges());
    const TovGraphStruct &same = assigned;
    assigned = same; // self-assignment keeps everything
    QCOMPARE(int(assigned.getEdges().size()), 2);
}

void TestTovGraphStruct::derivedFactoriesCreateAndGraphDeletes()
{
    {
        CountedGraph graph;
        buildGraph(graph, "1o-2i 2o-3i 3o-3i 4");
        QCOMPARE(liveNodes, 4);
        QCOMPARE(liveEdges, 2); // the refused self-loop was deleted at once
        QVERIFY(dynamic_cast<CountedEdge *>(graph.getEdges().front()));
        graph.removeNode(2);
        QCOMPARE(liveNodes, 3);
        QCOMPARE(liveEdges, 0);
        buildGraph(graph, "5o-6i");
    }
    QCOMPARE(liveNodes, 0);
    QCOMPARE(liveEdges, 0);
}

QTEST_GUILESS_MAIN(TestTovGraphStruct)
#include "tst_tovgraphstruct.moc"
