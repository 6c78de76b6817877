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
    std::puts("consumer ok");
    return 0;
}
