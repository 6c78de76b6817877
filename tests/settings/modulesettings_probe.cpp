// Looks up each "group:key" argument in TovModuleSettings and prints "group:key=type:value"
// ("group:key=invalid" for an invalid value). The argument "@rewrite" replaces ModuleSetting.ini
// beside the executable before the lookups that follow it.
#include <tovmodulesettings.h>

#include <QCoreApplication>
#include <QFile>
#include <QStringList>
#include <QTextStream>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    out.setCodec("UTF-8");
    const QStringList arguments = app.arguments().mid(1);
    for (const QString &argument : arguments) {
        if (argument == QLatin1String("@rewrite")) {
            QFile ini(app.applicationDirPath() + QLatin1String("/ModuleSetting.ini"));
            if (!ini.open(QIODevice::WriteOnly | QIODevice::Truncate))
                return 2;
            ini.write("[Rewritten]\nkey=new\n[Road]\nWidth=changed\n");
            continue;
        }
        const QString group = argument.section(QLatin1Char(':'), 0, 0);
        const QString key = argument.section(QLatin1Char(':'), 1);
        const QVariant value = TovModuleSettings::instance()->getValue(group, key);
        out << argument << '=';
        if (!value.isValid())
            out << "invalid";
        else if (value.userType() == QMetaType::QStringList)
            out << "list:" << value.toStringList().join(QLatin1Char('|'));
        else
            out << value.typeName() << ':' << value.toString();
        out << '\n';
    }
    return 0;
}
