#include "statusline.h"

#include "kypowerstatusmanager.h"
#include "powerstate.h"
#include "qpeapplication.h"
#include "refreshtimer.h"
#include "resource.h"
#include "timestring.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>

namespace {

QString timeText()
{
    const QDateTime now = QDateTime::currentDateTime();
    return QLocale().toString(now.date(), QStringLiteral("ddd ")) +
           TimeString::numberDateString(now.date(), TimeString::currentDateFormat()) + QStringLiteral("  ") +
           TimeString::timeString(now.time(), TimeString::currentAmPm());
}

} // namespace

StatusLine::StatusLine(QWidget *parent)
    : QWidget(parent), m_icon(new QLabel), m_power(new QLabel), m_time(new QLabel)
{
    m_icon->setObjectName(QStringLiteral("powerIcon"));
    m_power->setObjectName(QStringLiteral("power"));
    m_time->setObjectName(QStringLiteral("time"));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 1, 6, 1);
    layout->addWidget(m_icon);
    layout->addWidget(m_power, 1);
    layout->addWidget(m_time);
    connect(new RefreshTimer(this), &RefreshTimer::due, this, &StatusLine::refresh);
    if (const auto *application = qobject_cast<QPEApplication *>(qApp))
        connect(application, &QPEApplication::clockChanged, this, &StatusLine::refresh);
    refresh();
}

QString StatusLine::summary() const
{
    return m_power->text() + QStringLiteral(", ") + m_time->text();
}

void StatusLine::refresh()
{
    const KyPowerStatus &status = KyPowerStatusManager::readStatus();
    const QString icon = PowerState::icon(status);
    if (icon != m_shownIcon)
        m_icon->setPixmap(Resource::loadPixmap(icon));
    m_shownIcon = icon;
    m_power->setText(PowerState::brief(status));
    setToolTip(PowerState::text(status));
    m_time->setText(timeText());
}
