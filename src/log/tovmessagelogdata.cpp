#include "tovmessagelogdata.h"

#include <utility>

TovMessageLogData::TovMessageLogData(TovLogSys::LogData *data)
    : m_data(data)
{ }

TovMessageLogData &TovMessageLogData::setCategory(const QString &category)
{
    if (m_data)
        m_data->Category = category;
    return *this;
}

TovMessageLogData &TovMessageLogData::setEdoId(qint64 edoId)
{
    if (m_data)
        m_data->EdoID = edoId;
    return *this;
}

void TovMessageLogData::swap(TovMessageLogData &other)
{
    std::swap(m_data, other.m_data);
}

int TovMessageLogData::id() const
{
    return m_data ? m_data->ID : -1;
}
