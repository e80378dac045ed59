#include "preferences.h"

#include "config.h"
#include "kylog.h"
#include "kymisc.h"

#include <memory>
#include <QApplication>
#include <QFile>
#include <QPalette>

namespace {

const QString FileName = QStringLiteral("kyorganizer");
const QString FontKey = QStringLiteral("FontSize");
const QString HighlightKey = QStringLiteral("Highlight");
const QString LogKey = QStringLiteral("Log");
constexpr int StandardError = 2; // the descriptor

/* A point of the device's fonts is a pixel on a screen of 72 dpi, and at scale 2 on one of 144. */
int fontPixels(int logicalSize)
{
    const int dpiOfSizes = KyMisc::getResolutionScale() > 1 ? 144 : 72;
    return KyMisc::getFontPointSize(logicalSize) * KyMisc::getDpi() / dpiOfSizes;
}

void applyFont(int logicalSize)
{
    QFont font = QApplication::font();
    font.setPixelSize(fontPixels(logicalSize));
    QApplication::setFont(font);
}

/* Text on a colour is black or white, whatever can be read. */
QColor textOn(const QColor &colour)
{
    constexpr int middle = 140;
    return qGray(colour.rgb()) > middle ? Qt::black : Qt::white;
}

void applyHighlight(const QColor &colour)
{
    static const QPalette desktop = QApplication::palette();
    QPalette palette = desktop;
    if (colour.isValid()) {
        palette.setColor(QPalette::Highlight, colour);
        palette.setColor(QPalette::HighlightedText, textOn(colour));
    }
    QApplication::setPalette(palette);
}

KyLog::LogMode modeOf(Preferences::LogTarget target)
{
    return target == Preferences::NoLog ? KyLog::Silence : KyLog::ErrorToFile;
}

/* Each change begins a new file, so nothing is done unless the target is another one. */
void applyLog(Preferences::LogTarget target)
{
    static std::unique_ptr<KyLog> log;
    static Preferences::LogTarget present = Preferences::LogToTerminal;
    if (target == present)
        return;
    present = target;
    log.reset();
    if (target != Preferences::LogToTerminal)
        log = std::make_unique<KyLog>(modeOf(target), "kyorganizer", -1);
}

} // namespace

Preferences Preferences::load()
{
    const Config config(FileName);
    Preferences preferences;
    preferences.fontSize = config.readNumEntry(FontKey, 0);
    preferences.highlight = QColor(config.readEntry(HighlightKey));
    const int log = config.readNumEntry(LogKey, LogToTerminal);
    preferences.log = log == LogToFile || log == NoLog ? LogTarget(log) : LogToTerminal;
    return preferences;
}

bool Preferences::save() const
{
    Config config(FileName);
    config.writeEntry(FontKey, fontSize);
    config.writeEntry(HighlightKey, highlight.isValid() ? highlight.name() : QString());
    config.writeEntry(LogKey, int(log));
    return config.write();
}

void Preferences::apply() const
{
    applyFont(fontSize);
    applyHighlight(highlight);
    applyLog(log);
}

QString Preferences::logFile()
{
    const QString file = QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(StandardError));
    return file.startsWith(QLatin1String("/tmp/")) ? file : QString();
}
