#pragma once

#include <tovgraphedge.h>
#include <tovgraphnode.h>
#include <tovgraphstruct.h>

#include <QRegularExpression>
#include <QStringList>

// Builds a graph from a compact text: "1o-2i" joins 1's out side to 2's in side, "2o-3i@4" also
// sets the edge weight, "7" adds a node, "n3=0" sets node 3's weight, "f3=2" its flag. Answers,
// per edge token, what addEdge gave: "new", "same" (an edge already returned) or "null".
inline QStringList buildGraph(TovGraphStruct &graph, const QString &text)
{
    static const QRegularExpression edgeForm(QStringLiteral("^(-?\\d+)([io])-(-?\\d+)([io])(?:@(-?\\d+))?$"));
    static const QRegularExpression nodeForm(QStringLiteral("^([nf])(-?\\d+)=(-?\\d+)$"));
    QStringList answers;
    QList<TovGraphEdge *> seen;
    for (const QString &token : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch node = nodeForm.match(token);
        if (node.hasMatch()) {
            TovGraphNode *n = graph.addNode(node.captured(2).toInt());
            if (node.captured(1) == QLatin1String("n"))
                n->setWeight(node.captured(3).toInt());
            else
                n->setFlag(node.captured(3).toInt());
            continue;
        }
        const QRegularExpressionMatch m = edgeForm.match(token);
        if (!m.hasMatch()) {
            graph.addNode(token.toInt());
            continue;
        }
        TovGraphEdge *edge = graph.addEdge(m.captured(1).toInt(), m.captured(3).toInt(),
            m.captured(2) == QLatin1String("i"), m.captured(4) == QLatin1String("i"));
        if (!edge) {
            answers << QStringLiteral("null");
            continue;
        }
        if (!m.captured(5).isEmpty() && !seen.contains(edge))
            edge->setWeight(m.captured(5).toInt());
        answers << (seen.contains(edge) ? QStringLiteral("same") : QStringLiteral("new"));
        seen << edge;
    }
    return answers;
}
