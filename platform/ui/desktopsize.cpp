#include "qpeapplication.h"
#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>
#include <QWidget>

namespace {

/** The size that KY_SCREEN gives, empty when it gives none. */
QSize givenSize()
{
    constexpr int LongestSide = 8000;
    static const QRegularExpression form(
        QRegularExpression::anchoredPattern(QStringLiteral("([1-9][0-9]{2,3})x([1-9][0-9]{2,3})")));
    const QRegularExpressionMatch match = form.match(qEnvironmentVariable("KY_SCREEN"));
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    return size.width() <= LongestSide && size.height() <= LongestSide ? size : QSize(0, 0);
}

/** What the window system puts around a window: known once it has one of its own, shown or not. */
QSize windowFrame()
{
    if (!qobject_cast<QApplication *>(QCoreApplication::instance()))
        return QSize(0, 0);
    QWidget window;
    window.winId();
    return window.frameGeometry().size() - window.size();
}

} // namespace

QSize QPEApplication::desktopSize()
{
    const QSize given = givenSize();
    const QScreen *screen = QGuiApplication::primaryScreen();
    if (!given.isEmpty() || !screen)
        return given;
    return screen->size();
}

QSize QPEApplication::maximizedSize()
{
    const QSize given = givenSize();
    const QScreen *screen = QGuiApplication::primaryScreen();
    if (!given.isEmpty() || !screen)
        return given;
    return screen->availableSize() - windowFrame();
}
