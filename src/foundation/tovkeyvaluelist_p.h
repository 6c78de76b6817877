#pragma once

#include <QMap>
#include <QSharedData>
#include <QString>
#include <QVariant>

#include <memory>

class TovKeyValueListPrivate : public QSharedData
{
public:
    using Map = QMap<QString, QVariant>;

    Map &ensureMap()
    {
        if (!map)
            map = std::make_unique<Map>();
        return *map;
    }

    // Absent until the first entry is written: that is what isValid() reports.
    std::unique_ptr<Map> map;
};
