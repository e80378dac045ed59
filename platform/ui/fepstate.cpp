#include "config.h"
#include "fepstate_p.h"
#include "sessionbus_p.h"
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

QString FepState::file()
{
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QLatin1String("/ky-") +
           SessionBus::profile() + QLatin1String("/inputmethod");
}

std::optional<FepState> FepState::read()
{
    const Config config(file(), Config::File);
    if (!config.isValid())
        return std::nullopt;
    FepState state;
    state.on = config.readBoolEntry(QStringLiteral("on"));
    state.switchable = config.readBoolEntry(QStringLiteral("switchable"), true);
    state.visible = config.readBoolEntry(QStringLiteral("visible"));
    state.mode = config.readNumEntry(QStringLiteral("mode"), 0);
    state.method = config.readEntry(QStringLiteral("method"));
    return state;
}

bool FepState::write() const
{
    if (!QDir().mkpath(QFileInfo(file()).path()))
        return false;
    Config config(file(), Config::File);
    config.writeEntry(QStringLiteral("on"), on);
    config.writeEntry(QStringLiteral("switchable"), switchable);
    config.writeEntry(QStringLiteral("visible"), visible);
    config.writeEntry(QStringLiteral("mode"), mode);
    config.writeEntry(QStringLiteral("method"), method);
    return config.write();
}
