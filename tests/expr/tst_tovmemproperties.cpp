#include <tovexception.h>
#include <tovmemproperties.h>
#include <tovnotfoundvarexception.h>
#include <tovtestutil.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QtTest>

#include <functional>
#include <stdexcept>

using ByName = std::function<void(TovMemProperties &, const std::wstring &)>;
Q_DECLARE_METATYPE(hln::CVector2d)
Q_DECLARE_METATYPE(ByName)

namespace {

enum class Failure
{
    Sef,
    TovWithCode,
    NotFoundVar,
    Runtime
};

// Answers items from a table and records every call; an item it does not know fails with `failure`.
struct Calculator
{
    QHash<QString, QString> answers;
    QVector<TovMemPropertyExprCalcArgs> calls;
    Failure failure = Failure::Sef;

    void connectTo(TovMemProperties &set)
    {
        QObject::connect(&set, &TovMemProperties::onCalcExprVal,
            [this](TovMemProperty *, TovMemPropertyExprCalcArgs &args, QString &result) {
                calls.append(args);
                const auto it = answers.constFind(args.expr);
                if (it != answers.constEnd()) {
                    result = *it;
                    return;
                }
                const QString message = QStringLiteral("[%1]变量没有找到!").arg(args.expr);
                switch (failure) {
                case Failure::Sef:
                    throw SefException(message, 3);
                case Failure::TovWithCode:
                    throw TovException(message, 5);
                case Failure::NotFoundVar:
                    throw TovNotFoundVarException(message);
                case Failure::Runtime:
                    throw std::runtime_error("runtime");
                }
            });
    }
};

// Records its destruction: its name, and "+owner" when the owner was still set.
struct RecordingProperty : TovMemProperty
{
    explicit RecordingProperty(const std::wstring &name, QStringList *log)
        : m_log(log)
    {
        setPropName(name);
    }
    ~RecordingProperty() override
    {
        m_log->append(QString::fromStdWString(propName()) + (owner() ? QStringLiteral("+owner") : QString()));
    }
    QStringList *m_log;
};

struct ExposedProperties : TovMemProperties
{
    using TovMemProperties::deleteProp;
};

QJsonObject readFixture()
{
    QFile file(QFINDTESTDATA("../data/expr/memproperties.json"));
    if (!file.open(QIODevice::ReadOnly))
        return QJsonObject();
    return QJsonDocument::fromJson(file.readAll()).object();
}

} // namespace

class TestTovMemProperties : public QObject
{
    Q_OBJECT

private slots:
    void lookup_data();
    void lookup();
    void accessors_data();
    void accessors();
    void addDouble_data();
    void addDouble();
    void plainConversions_data();
    void plainConversions();
    void vectors_data();
    void vectors();
    void expressionCaching();
    void noReceiverReadsOwnText();
    void failedStateRethrows_data();
    void failedStateRethrows();
    void otherExceptionsPassThrough();
    void jsonExactForm();
    void jsonLoadTakesHashAsStored_data();
    void jsonLoadTakesHashAsStored();
    void jsonCacheValueSplit_data();
    void jsonCacheValueSplit();
    void isEqual_data();
    void isEqual();
    void assignMakesReplica();
    void clearAndDeleteProp();
};

void TestTovMemProperties::lookup_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("expected");
    QTest::newRow("name as added") << "Width" << 0;
    QTest::newRow("name lower-case") << "width" << 0;
    QTest::newRow("name upper-case") << "WIDTH" << 0;
    QTest::newRow("alias lower-case") << "w" << 0;
    QTest::newRow("alias upper-case") << "W" << 0;
    QTest::newRow("chinese name") << "宽度" << 1;
    QTest::newRow("alias set after adding is not indexed") << "Breadth" << -1;
    QTest::newRow("name of a property with an alias") << "HEIGHT" << 2;
    QTest::newRow("later name replaces an earlier alias") << "len" << 4;
    QTest::newRow("empty alias is not indexed") << "" << -1;
    QTest::newRow("unknown") << "Depth" << -1;
}

void TestTovMemProperties::lookup()
{
    QFETCH(QString, name);
    QFETCH(int, expected);
    TovMemProperties set;
    set.add(L"Width", L"W", 3);
    set.add(L"宽度", 1.5)->setAliasName(L"Breadth");
    set.add(L"Height", L"Len", QStringLiteral("h"), false);
    set.add(L"Height2", 2);
    set.add(L"LEN", 4);
    const std::wstring key = name.toStdWString();
    QCOMPARE(set.indexOfProp(key), expected);
    QCOMPARE(set.hasProp(key), expected >= 0);
    QCOMPARE(set.findPropByName(key), expected >= 0 ? set.props(expected) : nullptr);
    if (expected >= 0)
        QCOMPARE(set.getPropByName(key), set.props(expected));
}

void TestTovMemProperties::accessors_data()
{
    QTest::addColumn<ByName>("call");
    QTest::addColumn<int>("calls");
    QTest::addColumn<QChar>("separator");
    const auto row = [](const char *name, int calls, QChar separator, ByName call) {
        QTest::newRow(name) << call << calls << separator;
    };
    using S = TovMemProperties;
    using N = std::wstring;
    row("getPropByName", 0, QChar(), [](S &s, const N &n) { s.getPropByName(n); });
    row("asString", 1, QChar(), [](S &s, const N &n) { s.asString(n); });
    row("asStringList", 1, QChar(), [](S &s, const N &n) { s.asStringList(n); });
    row("asDouble: single value", 1, QChar(), [](S &s, const N &n) { s.asDouble(n); });
    row("asInteger: single value", 1, QChar(), [](S &s, const N &n) { s.asInteger(n); });
    row("asBoolean: single value", 1, QChar(), [](S &s, const N &n) { s.asBoolean(n); });
    row("asDoubleArray: single value per item", 1, QChar(), [](S &s, const N &n) { s.asDoubleArray(n); });
    row("asVector2d: components", 1, QChar(','),
        [](S &s, const N &n) { QCOMPARE(s.asVector2d(n), hln::CVector2d(1, 2)); });
    row("asVector2dArray: components", 1, QChar(','), [](S &s, const N &n) {
        QCOMPARE(s.asVector2dArray(n), QVector<hln::CVector2d> { hln::CVector2d(1, 2) });
    });
}

// Every accessor fails alike on an unknown name, and hands the calculator the separator it splits by.
void TestTovMemProperties::accessors()
{
    QFETCH(ByName, call);
    QFETCH(int, calls);
    QFETCH(QChar, separator);
    TovMemProperties set;
    Calculator calc;
    calc.answers = { { "a", "1,2" } };
    calc.connectTo(set);
    set.add(L"P", QStringLiteral("a"), true);

    DebugCapture capture;
    TOV_VERIFY_THROWS(call(set, L"深度"), TovException, QStringLiteral("[深度]属性不存在"), -1);
    QCOMPARE(capture.lines().size(), 1);
    QVERIFY2(QRegularExpression(QStringLiteral("^TovMemProperties:\\d+$"))
                 .match(capture.lines().first())
                 .hasMatch(),
        qPrintable(capture.lines().first()));

    call(set, L"p");
    QCOMPARE(calc.calls.size(), calls);
    if (calls)
        QCOMPARE(calc.calls[0].separator, separator);
}

void TestTovMemProperties::addDouble_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("shortest form that reads back") << 0.1 << "0.1";
    QTest::newRow("whole number without point") << 3.0 << "3";
    QTest::newRow("large number in exponent form") << 1e20 << "1e+20";
    QTest::newRow("negative fraction") << -2.25 << "-2.25";
}

void TestTovMemProperties::addDouble()
{
    QFETCH(double, value);
    QFETCH(QString, text);
    TovMemProperties set;
    for (TovMemProperty *p : { set.add(L"P", L"Q", value), set.add(L"R", value) }) {
        QCOMPARE(p->owner(), &set);
        QCOMPARE(p->value(), text);
        QVERIFY(!p->isExpr());
        QCOMPARE(p->asDouble(), value);
    }
    QCOMPARE(set.findPropByName(L"q"), set.props(0));
}

void TestTovMemProperties::plainConversions_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<double>("asDouble");
    QTest::addColumn<int>("asInteger");
    QTest::addColumn<bool>("asBoolean");
    QTest::addColumn<QVector<double>>("asDoubleArray");
    const auto row = [](const char *name, const char *value, const QStringList &items, double asDouble,
                         int asInteger, bool asBoolean, const QVector<double> &array) {
        QTest::newRow(name) << value << items << asDouble << asInteger << asBoolean << array;
    };
    row("integer", "42", { "42" }, 42.0, 42, true, { 42 });
    row("decimal is no integer", "2.5", { "2.5" }, 2.5, 0, true, { 2.5 });
    row("zero is false", "0", { "0" }, 0.0, 0, false, { 0 });
    row("exponent is no integer", "1e3", { "1e3" }, 1000.0, 0, true, { 1000 });
    row("beyond 32 bits is no integer", "2147483648", { "2147483648" }, 2147483648.0, 0, true,
        { 2147483648.0 });
    row("hex is not base 10", "0x10", { "0x10" }, 0.0, 0, false, { 0 });
    row("text", "abc", { "abc" }, 0.0, 0, false, { 0 });
    row("empty reads as one empty item", "", { "" }, 0.0, 0, false, { 0 });
    row("empty middle item kept", "a;;b", { "a", "", "b" }, 0.0, 0, false, { 0, 0, 0 });
    row("two numbers are not one number", "1;2.5", { "1", "2.5" }, 0.0, 0, false, { 1, 2.5 });
    row("separator alone gives two empty items", ";", { "", "" }, 0.0, 0, false, { 0, 0 });
}

void TestTovMemProperties::plainConversions()
{
    QFETCH(QString, value);
    QFETCH(QStringList, items);
    QFETCH(double, asDouble);
    QFETCH(int, asInteger);
    QFETCH(bool, asBoolean);
    QFETCH(QVector<double>, asDoubleArray);
    TovMemProperties set;
    Calculator calc;
    calc.connectTo(set);
    set.add(L"P", L"Alias", value, false);

    QCOMPARE(set.asString(L"alias", true, QStringLiteral("x=1")), value);
    QCOMPARE(set.props(0)->state(), TovMemPropertyExprState::NotCalculated);
    QCOMPARE(set.asStringList(L"p", QStringLiteral("x=1")), items);
    QCOMPARE(set.props(0)->state(), TovMemPropertyExprState::Calculated);
    QCOMPARE(set.props(0)->cacheValue(), items);
    QCOMPARE(set.asDouble(L"P"), asDouble);
    QCOMPARE(set.asInteger(L"P"), asInteger);
    QCOMPARE(set.asBoolean(L"P"), asBoolean);
    QCOMPARE(set.asDoubleArray(L"P"), asDoubleArray);
    QVERIFY2(calc.calls.isEmpty(), "a plain value never reaches the calculator");
}

void TestTovMemProperties::vectors_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<hln::CVector2d>("vector");
    QTest::addColumn<QVector<hln::CVector2d>>("array");
    using V = hln::CVector2d;
    QTest::newRow("one pair") << "1.5,-2" << V(1.5, -2) << QVector<V> { V(1.5, -2) };
    QTest::newRow("blanks around components") << " 1 , 2 " << V(1, 2) << QVector<V> { V(1, 2) };
    QTest::newRow("two items: the whole text is no pair")
        << "1,2;3,4" << V() << QVector<V> { V(1, 2), V(3, 4) };
    QTest::newRow("three components give the zero vector") << "1,2,3" << V() << QVector<V> { V() };
    QTest::newRow("one component gives the zero vector") << "7" << V() << QVector<V> { V() };
    QTest::newRow("text component reads as 0") << "a,2" << V(0, 2) << QVector<V> { V(0, 2) };
    QTest::newRow("trailing empty item spoils the second component")
        << "1,2;" << V(1, 0) << QVector<V> { V(1, 2), V() };
}

void TestTovMemProperties::vectors()
{
    QFETCH(QString, value);
    QFETCH(hln::CVector2d, vector);
    QFETCH(QVector<hln::CVector2d>, array);
    TovMemProperties set;
    set.add(L"P", value, false);
    QCOMPARE(set.asVector2d(L"p"), vector);
    QCOMPARE(set.asVector2dArray(L"p"), array);
}

void TestTovMemProperties::expressionCaching()
{
    TovMemProperties set;
    Calculator calc;
    calc.answers = { { "W*2", "7" }, { "W*3", "10.5" }, { "W*4", "14" } };
    calc.connectTo(set);
    TovMemProperty *area = set.add(L"Area", QStringLiteral("W*2;W*3"), true);

    QCOMPARE(area->asString(false), QStringLiteral("W*2;W*3"));
    QVERIFY(calc.calls.isEmpty());
    QCOMPARE(area->asString(), QStringLiteral("7;10.5"));
    QCOMPARE(calc.calls.size(), 2);
    QCOMPARE(calc.calls[0].expr, QStringLiteral("W*2"));
    QCOMPARE(calc.calls[1].expr, QStringLiteral("W*3"));
    QCOMPARE(area->state(), TovMemPropertyExprState::Calculated);
    QCOMPARE(area->cacheValue(), QStringList({ "7", "10.5" }));

    // Cached: no argument text, no new calculation.
    QCOMPARE(area->asDoubleArray(), QVector<double>({ 7, 10.5 }));
    QCOMPARE(calc.calls.size(), 2);

    // An argument text always recalculates and reaches the calculator unchanged.
    QCOMPARE(area->asStringList(QStringLiteral("@n=2"), QLatin1Char('|')), QStringList({ "7", "10.5" }));
    QCOMPARE(calc.calls.size(), 4);
    QCOMPARE(calc.calls[3].args, QStringLiteral("@n=2"));
    QCOMPARE(calc.calls[3].separator, QLatin1Char('|'));

    // The same text again keeps the cache; a new text resets it.
    area->setValue(QStringLiteral("W*2;W*3"));
    QCOMPARE(area->state(), TovMemPropertyExprState::Calculated);
    area->setValue(QStringLiteral("W*4"));
    QCOMPARE(area->state(), TovMemPropertyExprState::NotCalculated);
    QVERIFY(area->cacheValue().isEmpty());
    QCOMPARE(area->asInteger(), 14);

    // Turning a read plain property into an expression drops the split items.
    TovMemProperty *plain = set.add(L"Plain", QStringLiteral("W*2"), false);
    QCOMPARE(plain->asDouble(), 0.0);
    plain->setIsExpr(true);
    QCOMPARE(plain->state(), TovMemPropertyExprState::NotCalculated);
    QCOMPARE(plain->asDouble(), 7.0);

    // The set's reset makes every property recalculate.
    const int before = calc.calls.size();
    set.resetState();
    QCOMPARE(area->state(), TovMemPropertyExprState::NotCalculated);
    QCOMPARE(plain->state(), TovMemPropertyExprState::NotCalculated);
    QCOMPARE(set.asBoolean(L"area"), true);
    QCOMPARE(calc.calls.size(), before + 1);
}

void TestTovMemProperties::noReceiverReadsOwnText()
{
    TovMemProperties set;
    TovMemProperty *p = set.add(L"Sum", QStringLiteral("1+2"), true);
    QCOMPARE(p->asString(), QStringLiteral("1+2"));
    QCOMPARE(p->asDouble(), 0.0);
    QCOMPARE(p->state(), TovMemPropertyExprState::Calculated);

    TovMemPropertyExprCalcArgs args { QStringLiteral("x"), QString(), QChar() };
    QCOMPARE(set.calcExprVal(p, args), QStringLiteral("x"));

    TovMemProperty loose;
    loose.setValue(QStringLiteral("3;4"));
    loose.setIsExpr(true);
    QCOMPARE(loose.asDoubleArray(), QVector<double>({ 3, 4 }));
}

void TestTovMemProperties::failedStateRethrows_data()
{
    QTest::addColumn<int>("failure");
    QTest::addColumn<QString>("value");
    QTest::newRow("SefException with a code") << int(Failure::Sef) << "bad";
    QTest::newRow("TovException with a code") << int(Failure::TovWithCode) << "bad";
    QTest::newRow("not-found variable") << int(Failure::NotFoundVar) << "bad";
    QTest::newRow("failure on the second item") << int(Failure::Sef) << "ok;bad;ok";
}

void TestTovMemProperties::failedStateRethrows()
{
    QFETCH(int, failure);
    QFETCH(QString, value);
    TovMemProperties set;
    Calculator calc;
    calc.answers = { { "ok", "1" } };
    calc.failure = Failure(failure);
    calc.connectTo(set);
    TovMemProperty *p = set.add(L"P", value, true);
    const QString message = QStringLiteral("[bad]变量没有找到!");

    // Whatever was thrown, a plain SefException with code -1 comes out.
    TOV_VERIFY_THROWS(p->asStringList(), SefException, message, -1);
    const int calls = calc.calls.size();
    QCOMPARE(p->state(), TovMemPropertyExprState::Failed);
    QCOMPARE(p->errMsg(), message);
    QVERIFY(p->cacheValue().isEmpty());

    // Every later read rethrows the stored message without calculating, argument text or not.
    calc.answers.insert(QStringLiteral("bad"), QStringLiteral("2"));
    TOV_VERIFY_THROWS(p->asString(), SefException, message, -1);
    TOV_VERIFY_THROWS(p->asDouble(QStringLiteral("@n=1")), SefException, message, -1);
    TOV_VERIFY_THROWS(set.asVector2d(L"p"), SefException, message, -1);
    p->setValue(value);
    TOV_VERIFY_THROWS(p->asInteger(), SefException, message, -1);
    QCOMPARE(calc.calls.size(), calls);
    QCOMPARE(p->asString(false), value);

    p->resetState();
    QVERIFY(p->errMsg().isEmpty());
    QCOMPARE(
        p->asString(), QString(value).replace(QLatin1String("bad"), QLatin1String("2")).replace("ok", "1"));
    QCOMPARE(p->state(), TovMemPropertyExprState::Calculated);
}

void TestTovMemProperties::otherExceptionsPassThrough()
{
    TovMemProperties set;
    Calculator calc;
    calc.answers = { { "ok", "1" } };
    calc.failure = Failure::Runtime;
    calc.connectTo(set);
    TovMemProperty *p = set.add(L"P", QStringLiteral("ok;bad"), true);
    QVERIFY_EXCEPTION_THROWN(p->asStringList(), std::runtime_error);
    QCOMPARE(p->state(), TovMemPropertyExprState::NotCalculated);
    QVERIFY(p->cacheValue().isEmpty());
    QVERIFY(p->errMsg().isEmpty());
    QVERIFY_EXCEPTION_THROWN(p->asStringList(), std::runtime_error);
    QCOMPARE(calc.calls.size(), 4);
}

void TestTovMemProperties::jsonExactForm()
{
    const QJsonObject fixture = readFixture();
    QVERIFY(!fixture.isEmpty());

    TovMemProperties set;
    Calculator calc;
    calc.answers = { { "W*2", "7" }, { "W*3", "10.5" } };
    calc.connectTo(set);
    set.add(L"Width", L"W", 3.5)->asStringList();
    set.add(L"Area", QStringLiteral("W*2;W*3"), true)->asStringList();
    set.add(L"Bad", L"坏", QStringLiteral("X"), true);
    QVERIFY_EXCEPTION_THROWN(set.asStringList(L"坏"), SefException);
    set.add(L"Note", QStringLiteral("a;;b"), false);

    QJsonObject saved;
    set.saveToFile(saved);
    QCOMPARE(QJsonDocument(saved).toJson(QJsonDocument::Compact),
        QJsonDocument(fixture).toJson(QJsonDocument::Compact));

    TovMemProperties loaded;
    loaded.add(L"Stale", 1);
    loaded.loadFromFile(fixture);
    QVERIFY(loaded.isEqual(set));
    QCOMPARE(loaded.count(), 4);
    for (int i = 0; i < loaded.count(); ++i) {
        QCOMPARE(loaded.props(i)->owner(), &loaded);
        QCOMPARE(loaded.props(i)->state(), set.props(i)->state());
        QCOMPARE(loaded.props(i)->errMsg(), set.props(i)->errMsg());
    }
    QVERIFY(!loaded.hasProp(L"stale"));
    QCOMPARE(loaded.props(1)->cacheValue(), QStringList({ "7", "10.5" }));
    // Loaded states hold: the calculated items are served without a receiver, the failure rethrows.
    QCOMPARE(loaded.asString(L"AREA"), QStringLiteral("7;10.5"));
    TOV_VERIFY_THROWS(loaded.asString(L"bad"), SefException, "[X]变量没有找到!", -1);
    QCOMPARE(loaded.findPropByName(L"W"), loaded.props(0));

    QJsonObject resaved;
    loaded.saveToFile(resaved);
    QCOMPARE(resaved, fixture);
}

void TestTovMemProperties::jsonLoadTakesHashAsStored_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("lookup");
    QTest::addColumn<int>("expected"); // -1 not found, -2 std::out_of_range
    QTest::newRow("lower-case key found") << "p" << 0 << "P" << 0;
    QTest::newRow("upper-case key is never matched") << "P" << 0 << "p" << -1;
    QTest::newRow("key unrelated to the name") << "other" << 1 << "OTHER" << 1;
    QTest::newRow("the name itself is not indexed") << "other" << 1 << "q" << -1;
    QTest::newRow("position past the sequence") << "p" << 2 << "p" << -2;
    QTest::newRow("negative position") << "p" << -1 << "p" << -2;
}

void TestTovMemProperties::jsonLoadTakesHashAsStored()
{
    QFETCH(QString, key);
    QFETCH(int, position);
    QFETCH(QString, lookup);
    QFETCH(int, expected);
    const QJsonObject json = QJsonDocument::fromJson(QStringLiteral(R"({"Property": [{"PropName": "P"},
        {"PropName": "Q"}], "Hash": [{"Key": "%1", "Value": %2}]})")
                                                         .arg(key)
                                                         .arg(position)
                                                         .toUtf8())
                                 .object();
    TovMemProperties set;
    set.loadFromFile(json);
    QCOMPARE(set.count(), 2);
    const std::wstring name = lookup.toStdWString();
    if (expected == -2) {
        QVERIFY_EXCEPTION_THROWN(set.findPropByName(name), std::out_of_range);
        QCOMPARE(set.indexOfProp(name), position);
        return;
    }
    QCOMPARE(set.findPropByName(name), expected < 0 ? nullptr : set.props(expected));
    QCOMPARE(set.indexOfProp(name), expected);
}

void TestTovMemProperties::jsonCacheValueSplit_data()
{
    QTest::addColumn<QString>("cacheValue");
    QTest::addColumn<QStringList>("items");
    QTest::newRow("two items") << "7|10.5" << QStringList { "7", "10.5" };
    QTest::newRow("empty middle item kept") << "a||b" << QStringList { "a", "", "b" };
    QTest::newRow("empty text is one empty item") << "" << QStringList { "" };
}

void TestTovMemProperties::jsonCacheValueSplit()
{
    QFETCH(QString, cacheValue);
    QFETCH(QStringList, items);
    TovMemProperty p;
    p.loadFromFile(QJsonObject { { "cacheValue", cacheValue }, { "ExprState", 1 }, { "IsExpr", true } });
    QCOMPARE(p.cacheValue(), items);
    QCOMPARE(p.asStringList(), items);
    QVERIFY(p.propName().empty());
    QVERIFY(p.value().isEmpty());
}

void TestTovMemProperties::isEqual_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<bool>("equal");
    QTest::newRow("same content") << "" << true;
    QTest::newRow("other calculation state") << "state" << true;
    QTest::newRow("number written differently") << "value:2.50;x" << true;
    QTest::newRow("number within the distance tolerance") << "value:2.5000001;x" << true;
    QTest::newRow("number beyond the distance tolerance") << "value:2.50001;x" << false;
    QTest::newRow("text item in other case") << "value:2.5;X" << false;
    QTest::newRow("one item more") << "value:2.5;x;" << false;
    QTest::newRow("name in other case") << "name" << false;
    QTest::newRow("other alias") << "alias" << false;
    QTest::newRow("expression flag") << "expr" << false;
    QTest::newRow("one property more") << "add" << false;
    QTest::newRow("other order") << "order" << false;
}

void TestTovMemProperties::isEqual()
{
    QFETCH(QString, change);
    QFETCH(bool, equal);
    auto fill = [](TovMemProperties &set, bool swapped) {
        if (swapped)
            set.add(L"Other", L"O", 1);
        set.add(L"Width", L"W", QStringLiteral("2.5;x"), false);
        if (!swapped)
            set.add(L"Other", L"O", 1);
    };
    TovMemProperties a;
    fill(a, false);
    TovMemProperties b;
    fill(b, change == QLatin1String("order"));
    TovMemProperty *p = b.props(0);
    if (change == QLatin1String("state"))
        p->asStringList();
    else if (change.startsWith(QLatin1String("value:")))
        p->setValue(change.mid(6));
    else if (change == QLatin1String("name"))
        p->setPropName(L"WIDTH");
    else if (change == QLatin1String("alias"))
        p->setAliasName(L"Wd");
    else if (change == QLatin1String("expr"))
        p->setIsExpr(true);
    else if (change == QLatin1String("add"))
        b.add(L"Extra", 0);
    QCOMPARE(a.isEqual(b), equal);
    QCOMPARE(b.isEqual(a), equal);
}

void TestTovMemProperties::assignMakesReplica()
{
    TovMemProperties source;
    source.loadFromFile(readFixture());
    source.findPropByName(L"width")->setPropName(L"Renamed"); // the index keeps "width"

    QStringList log;
    TovMemProperties target;
    target.add(new RecordingProperty(L"Old", &log));
    target.assign(source);
    QCOMPARE(log, QStringList { "Old" });
    QVERIFY(target.isEqual(source));
    QCOMPARE(target.findPropByName(L"width"), target.props(0));
    QVERIFY(!target.hasProp(L"renamed"));
    for (int i = 0; i < target.count(); ++i) {
        QVERIFY(target.props(i) != source.props(i));
        QCOMPARE(target.props(i)->owner(), &target);
        QCOMPARE(target.props(i)->state(), source.props(i)->state());
        QCOMPARE(target.props(i)->cacheValue(), source.props(i)->cacheValue());
        QCOMPARE(target.props(i)->errMsg(), source.props(i)->errMsg());
    }
    QJsonObject a;
    QJsonObject b;
    source.saveToFile(a);
    target.saveToFile(b);
    QCOMPARE(a, b);

    target.assign(target);
    QCOMPARE(target.count(), source.count());
}

void TestTovMemProperties::clearAndDeleteProp()
{
    QStringList log;
    {
        ExposedProperties set;
        set.add(new RecordingProperty(L"A", &log));
        set.add(new RecordingProperty(L"B", &log));
        set.add(new RecordingProperty(L"C", &log));

        // deleteProp destroys a property never added, and leaves the containers alone.
        auto *loose = new RecordingProperty(L"Loose", &log);
        set.deleteProp(loose);
        QCOMPARE(log, QStringList { "Loose" });
        QCOMPARE(set.count(), 3);

        set.clear();
        QCOMPARE(log, QStringList({ "Loose", "A", "B", "C" }));
        QCOMPARE(set.count(), 0);
        QCOMPARE(set.indexOfProp(L"a"), -1);

        set.add(new RecordingProperty(L"D", &log));
    }
    QCOMPARE(log.last(), QStringLiteral("D"));
}

QTEST_GUILESS_MAIN(TestTovMemProperties)
#include "tst_tovmemproperties.moc"
