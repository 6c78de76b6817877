#pragma once

#include <sefdebugoutput.h>
#include <sefexception.h>

#include <QStringList>
#include <QTest>

// One row of a data-driven test, its values in column order.
template<typename... Values>
void row(const char *name, const Values &...values)
{
    (QTest::newRow(name) << ... << values);
}

// Collects every line written to the host's debug output while it lives.
class DebugCapture
{
public:
    DebugCapture();
    ~DebugCapture();
    DebugCapture(const DebugCapture &) = delete;
    DebugCapture &operator=(const DebugCapture &) = delete;

    QStringList lines() const;
    void clear();

private:
    struct State;
    State *m_state;
    SefDebugOutput::Handler m_previous;
};

// Verifies that `statement` throws exactly `ExceptionType` (not merely a base of it) with the
// given message and code.
#define TOV_VERIFY_THROWS(statement, ExceptionType, expectedMessage, expectedCode)                           \
    do {                                                                                                     \
        bool tovThrown = false;                                                                              \
        try {                                                                                                \
            statement;                                                                                       \
        } catch (const ExceptionType &tovE) {                                                                \
            tovThrown = true;                                                                                \
            QVERIFY2(typeid(tovE) == typeid(ExceptionType), "thrown type is derived from the expected one"); \
            QCOMPARE(tovE.message(), QString(expectedMessage));                                              \
            QCOMPARE(tovE.code(), int(expectedCode));                                                        \
        }                                                                                                    \
        QVERIFY2(tovThrown, "expected " #ExceptionType " from: " #statement);                                \
    } while (false)
