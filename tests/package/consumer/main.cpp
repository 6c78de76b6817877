// Uses the library only through the installed package and its umbrella header.
#include <TovGeneralUtility/TovGeneralUtility.h>

#include <cstdio>

int main()
{
    try {
        throw TovException(QStringLiteral("x"), 3);
    } catch (const SefException &e) {
        if (e.code() != 3 || !SefCommon::isNumeric(QStringLiteral(" 1e3 ")))
            return 1;
    }
    RixMemTable table;
    table.addField(QStringLiteral("ID"), QString(), QVariant::Int);
    table.loadFromJson(QByteArray(R"([{"ID":7}])"));
    if (table.recordCount() != 1 || table.items(0)->asInteger(QStringLiteral("id")) != 7)
        return 1;
    std::puts("consumer ok");
    return 0;
}
