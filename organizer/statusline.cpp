#include "statusline.h"

#include "kypowerstatusmanager.h"
#include "powerstate.h"
#include "refreshtimer.h"
#include "resource.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>

namespace {

QString timeText()
{
    const QDateTime now = QDateTime::currentDateTime();
    const QLocale locale;
    return locale.toString(now.date(), QStringLiteral("ddd ")) +
           locale.toString(now.date(), QLocale::ShortFormat) + QStringLiteral("  ") +
           locale.toString(now.time(), QLocale::ShortFormat);
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
