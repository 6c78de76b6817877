#pragma once

#include "tovgeneralutility_export.h"

#include <QString>
#include <QVariant>

#include <memory>

class RixMemFields;
class TovKeyValueList;

// One column of a memory table: its key, caption, data type, display and editing attributes, the
// constraint a typed-in value must satisfy and free extra attributes.
class TOVGENERALUTILITY_EXPORT RixMemField
{
public:
    RixMemField();
    ~RixMemField();
    RixMemField(const RixMemField &) = delete;
    RixMemField &operator=(const RixMemField &) = delete;

    QString fieldName() const { return m_fieldName; }
    void setFieldName(const QString &fieldName) { m_fieldName = fieldName; }
    QString displayName() const { return m_displayName; }
    void setDisplayName(const QString &displayName) { m_displayName = displayName; }
    // The type loaded and typed-in values are converted to; QVariant::String by default.
    QVariant::Type dataType() const { return m_dataType; }
    void setDataType(QVariant::Type dataType) { m_dataType = dataType; }
    // Also selects the columns of a delimited-string load without column names.
    bool visible() const { return m_visible; }
    void setVisible(bool visible) { m_visible = visible; }
    bool readonly() const { return m_readonly; }
    void setReadonly(bool readonly) { m_readonly = readonly; }
    int inputMode() const { return m_inputMode; }
    void setInputMode(int inputMode) { m_inputMode = inputMode; }
    // A boolean expression a new value must satisfy, "#" standing for the value; empty: none.
    QString constraintExpr() const { return m_constraintExpr; }
    void setConstraintExpr(const QString &constraintExpr) { m_constraintExpr = constraintExpr; }
    // Shown when the constraint fails; empty: the default message.
    QString constraintMsg() const { return m_constraintMsg; }
    void setConstraintMsg(const QString &constraintMsg) { m_constraintMsg = constraintMsg; }
    QString pickList() const { return m_pickList; }
    void setPickList(const QString &pickList) { m_pickList = pickList; }
    int order() const { return m_order; }
    void setOrder(int order) { m_order = order; }

    // Index in the owning field set, looked up by name; -1 without an owner.
    int fieldIndex() const;
    // Copies every attribute but the owner; the extra attributes are deep-copied.
    void assign(RixMemField *other);

    // Text of the extra attribute key; empty when absent.
    QString extData(const QString &key) const;
    void setExtData(const QString &key, const QVariant &value);
    // The extra attributes, created on first use; owned by the field.
    TovKeyValueList *extDataObj();
    // Loads the extra attributes from "key=value;..." text; empty text removes them.
    void initExtData(const QString &text);
    // The extra attributes as "key=value;..." text; empty without any.
    QString extDataToString() const;

protected:
    void freeExtData();

private:
    friend class RixMemFields;

    RixMemFields *m_owner = nullptr;
    QString m_fieldName;
    QString m_displayName;
    QVariant::Type m_dataType = QVariant::String;
    bool m_visible = true;
    bool m_readonly = false;
    int m_inputMode = 0;
    QString m_constraintExpr;
    QString m_constraintMsg;
    QString m_pickList;
    int m_order = -1;
    std::unique_ptr<TovKeyValueList> m_extData;
};
