#ifndef KY_TEST_DISPLAYFIXTURE_H
#define KY_TEST_DISPLAYFIXTURE_H

#include <QApplication>
#include <QProxyStyle>

/** The style of the tests: a scroll bar of 16 pixels, whatever the desktop's style says. */
class NarrowScrollBars : public QProxyStyle
{
public:
    static constexpr int Extent = 16;

    NarrowScrollBars() : QProxyStyle(QStringLiteral("fusion")) {}

    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override
    {
        return metric == PM_ScrollBarExtent ? Extent : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

/** Sets the resolution and the size of the desktop, such as "480x640". */
inline void setDisplay(int dpi, const QByteArray &screen)
{
    qputenv("KY_DPI", QByteArray::number(dpi));
    qputenv("KY_SCREEN", screen);
}

#endif
