#include "kymisc.h"
#include "config.h"

QString KyMisc::getLanguage()
{
    constexpr int CodeLength = 2;
    const Config locale(QStringLiteral("locale"));
    const QString language = locale.readEntry(QStringLiteral("Language"), qEnvironmentVariable("LANG"));
    return language.length() == CodeLength ? language : QStringLiteral("en");
}
