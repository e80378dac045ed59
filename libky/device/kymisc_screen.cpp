#include "currentdpi.h"
#include "kydeviceinfo.h"
#include "kymisc.h"
#include "qpeapplication.h"
#include <QStyle>

int KyMisc::getDpi()
{
    return qt_currentDpi();
}

int KyMisc::getResolutionScale()
{
    constexpr int UnitDpi = 72;
    return qt_currentDpi() / UnitDpi;
}

QSize KyMisc::getMaximizedWidgetInfo()
{
    return QPEApplication::maximizedSize();
}

QSize KyMisc::getScrollbarMetrics()
{
    if (!qobject_cast<QApplication *>(QCoreApplication::instance()))
        return QSize(0, 0);
    const int extent = QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    return QSize(extent, extent);
}

int KyMisc::getMaximizedWidgetContentsWidth()
{
    constexpr int Borders = 4;
    return getMaximizedWidgetInfo().width() - getScrollbarMetrics().width() - Borders * getResolutionScale();
}

bool KyMisc::isLandscape()
{
    const QSize desktop = QPEApplication::desktopSize();
    return desktop.width() > desktop.height();
}

int KyMisc::defaultInputDevice()
{
    constexpr int StylusWidth = 480;
    constexpr int Keyboard = 1;
    constexpr int Stylus = 2;
    // Read and dropped: so far no model differs from the others of its width.
    static_cast<void>(KyDeviceInfo::getProductNumber());
    return QPEApplication::desktopSize().width() == StylusWidth ? Stylus : Keyboard;
}

QString KyMisc::defaultWallPaper()
{
    return QStringLiteral("wallpaper/default");
}
