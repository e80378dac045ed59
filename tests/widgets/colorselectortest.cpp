#include "kycolorselector.h"
#include "kycolortable.h"
#include "logcapture.h"
#include <QPushButton>
#include <QtTest>

namespace {

QPushButton *buttonOf(const KyColorSelector &selector)
{
    return selector.findChild<QPushButton *>();
}

KyColorTable *tableOf(const KyColorSelector &selector)
{
    return selector.findChild<KyColorTable *>();
}

void tapCell(const KyColorSelector &selector, int row, int col)
{
    QTest::mouseClick(tableOf(selector)->viewport(), Qt::LeftButton, {}, {col * 20 + 10, row * 18 + 9});
}

bool isMarked(const KyColorSelector &selector, int row, int col)
{
    return tableOf(selector)->viewport()->grab().toImage().pixel(col * 20, row * 18) == 0xff000000;
}

/** Keeps the signals of a selector in their order, with the state of the button at that moment. */
class Listener : public QObject
{
public:
    explicit Listener(const KyColorSelector *selector) : m_selector(selector)
    {
        connect(selector, &KyColorSelector::selected, this,
                [this](QRgb color) { note("selected " + QString::number(color, 16)); });
        connect(selector, &KyColorSelector::reSelected, this,
                [this](QRgb color) { note("reSelected " + QString::number(color, 16)); });
        connect(selector, &KyColorSelector::transparentSelected, this,
                [this] { note("transparentSelected"); });
        connect(selector, &KyColorSelector::transparentReSelected, this,
                [this] { note("transparentReSelected"); });
    }

    /** What came since the last call. */
    [[nodiscard]] QStringList taken() { return std::exchange(m_heard, {}); }

private:
    void note(const QString &what)
    {
        const QPushButton *button = buttonOf(*m_selector);
        m_heard.append(button && button->isChecked() ? what + ", button on" : what);
    }

    const KyColorSelector *m_selector;
    QStringList m_heard;
};

} // namespace

class ColorSelectorTest : public QObject
{
    Q_OBJECT
private slots:
    void hasTableOfDefaultPalette();
    void hasNoButtonUnlessWanted();
    void buttonStandsAboveTheTable();
    void takesNameAndWindowFlags();
    void choicesOfTheTableAreForwarded();
    void buttonTellsOnAndOff();
    void settingAColourMarksItWithoutSignal();
    void settingAColourSwitchesTheButtonOff();
    void settingTransparencySwitchesTheButtonOn();
    void settingTransparencyWithoutButtonIsADebugLine();
    void choosingAColourTakesTheButtonBackSilently();
    void choosingTheSameColourTakesTheButtonBackSilently();
    void colourChosenBeforeTransparencyIsStillTheSelectedOne();
    void focusGoesToTheTable();
    void keyboardReachesTheButton();
};

void ColorSelectorTest::hasTableOfDefaultPalette()
{
    const KyColorSelector selector(false);
    QCOMPARE(tableOf(selector)->sizeHint(), QSize(160, 108));
    for (int cell = 0; cell < 48; ++cell)
        QCOMPARE(tableOf(selector)->getRgbInCell(cell / 8, cell % 8), KyColorTable::defColors[cell]);
}

void ColorSelectorTest::hasNoButtonUnlessWanted()
{
    const KyColorSelector plain(false);
    QVERIFY(!buttonOf(plain));
    const KyColorSelector selector(true);
    QVERIFY(buttonOf(selector));
    QCOMPARE(buttonOf(selector)->text(), "Transparent");
    QVERIFY(buttonOf(selector)->isCheckable());
    QVERIFY(!buttonOf(selector)->isChecked());
}

void ColorSelectorTest::buttonStandsAboveTheTable()
{
    KyColorSelector selector(true);
    selector.resize(selector.sizeHint());
    selector.show();
    QVERIFY(QTest::qWaitForWindowExposed(&selector));
    const QRect button = buttonOf(selector)->geometry();
    QCOMPARE(button.top(), 0);
    QCOMPARE(tableOf(selector)->geometry().top(), button.bottom() + 1);
    QCOMPARE(tableOf(selector)->viewport()->size(), QSize(160, 108));
}

void ColorSelectorTest::takesNameAndWindowFlags()
{
    QWidget parent;
    const KyColorSelector child(true, &parent, "selector");
    QCOMPARE(child.objectName(), "selector");
    QVERIFY(!child.isWindow());
    const KyColorSelector window(true, &parent, nullptr, Qt::Tool);
    QCOMPARE(window.windowType(), Qt::Tool);
}

void ColorSelectorTest::choicesOfTheTableAreForwarded()
{
    KyColorSelector selector(false);
    selector.show();
    Listener listener(&selector);
    tapCell(selector, 1, 0);
    QCOMPARE(listener.taken(), QStringList{"selected ffff0000"});
    tapCell(selector, 1, 0);
    QCOMPARE(listener.taken(), QStringList{"reSelected ffff0000"});
    QTest::keyClick(tableOf(selector), Qt::Key_Right);
    QTest::keyClick(tableOf(selector), Qt::Key_Return);
    QCOMPARE(listener.taken(), QStringList{"selected ffffccff"});
}

void ColorSelectorTest::buttonTellsOnAndOff()
{
    KyColorSelector selector(true);
    selector.show();
    Listener listener(&selector);
    QTest::mouseClick(buttonOf(selector), Qt::LeftButton);
    QCOMPARE(listener.taken(), QStringList{"transparentSelected, button on"});
    QTest::mouseClick(buttonOf(selector), Qt::LeftButton);
    QCOMPARE(listener.taken(), QStringList{"transparentReSelected"});
}

void ColorSelectorTest::settingAColourMarksItWithoutSignal()
{
    for (const bool withTransparent : {false, true}) {
        KyColorSelector selector(withTransparent);
        selector.show();
        Listener listener(&selector);
        selector.setCurrentColor(0xffff0080);
        QVERIFY(isMarked(selector, 5, 1));
        selector.setCurrentColor(0xff123456);
        QVERIFY(!isMarked(selector, 5, 1));
        QCOMPARE(listener.taken(), QStringList());
    }
}

void ColorSelectorTest::settingAColourSwitchesTheButtonOff()
{
    KyColorSelector selector(true);
    selector.show();
    QTest::mouseClick(buttonOf(selector), Qt::LeftButton);
    Listener listener(&selector);
    selector.setCurrentColor(0xffff0080);
    QVERIFY(!buttonOf(selector)->isChecked());
    QVERIFY(isMarked(selector, 5, 1));
    QCOMPARE(listener.taken(), QStringList{"transparentReSelected"});
}

void ColorSelectorTest::settingTransparencySwitchesTheButtonOn()
{
    KyColorSelector selector(true);
    Listener listener(&selector);
    selector.setCurrentColorTransparent();
    QVERIFY(buttonOf(selector)->isChecked());
    QCOMPARE(listener.taken(), QStringList{"transparentSelected, button on"});
    selector.setCurrentColorTransparent();
    QVERIFY(buttonOf(selector)->isChecked());
    QCOMPARE(listener.taken(), QStringList());
}

void ColorSelectorTest::settingTransparencyWithoutButtonIsADebugLine()
{
    KyColorSelector selector(false);
    Listener listener(&selector);
    const LogCapture log;
    selector.setCurrentColorTransparent();
    QCOMPARE(log.lines(), QStringList{"GOD"});
    QCOMPARE(log.warnings(), QStringList());
    QCOMPARE(listener.taken(), QStringList());
}

void ColorSelectorTest::choosingAColourTakesTheButtonBackSilently()
{
    KyColorSelector selector(true);
    selector.show();
    selector.setCurrentColorTransparent();
    Listener listener(&selector);
    tapCell(selector, 1, 0);
    QCOMPARE(listener.taken(), QStringList{"selected ffff0000"});
    QVERIFY(!buttonOf(selector)->isChecked());
    QTest::mouseClick(buttonOf(selector), Qt::LeftButton);
    QCOMPARE(listener.taken(), QStringList{"transparentSelected, button on"});
}

void ColorSelectorTest::choosingTheSameColourTakesTheButtonBackSilently()
{
    KyColorSelector selector(true);
    selector.show();
    tapCell(selector, 1, 0);
    selector.setCurrentColorTransparent();
    Listener listener(&selector);
    tapCell(selector, 1, 0);
    QCOMPARE(listener.taken(), QStringList{"reSelected ffff0000"});
    QVERIFY(!buttonOf(selector)->isChecked());
}

void ColorSelectorTest::colourChosenBeforeTransparencyIsStillTheSelectedOne()
{
    KyColorSelector selector(true);
    selector.show();
    tapCell(selector, 1, 0);
    Listener listener(&selector);
    QTest::mouseClick(buttonOf(selector), Qt::LeftButton);
    tapCell(selector, 1, 0);
    QCOMPARE(listener.taken(), (QStringList{"transparentSelected, button on", "reSelected ffff0000"}));
}

void ColorSelectorTest::focusGoesToTheTable()
{
    QWidget page;
    auto *selector = new KyColorSelector(true, &page);
    page.show();
    page.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&page));
    selector->setFocus();
    QTRY_VERIFY_WITH_TIMEOUT(tableOf(*selector)->hasFocus(), 10000);
}

void ColorSelectorTest::keyboardReachesTheButton()
{
    KyColorSelector selector(true);
    selector.show();
    selector.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&selector));
    Listener listener(&selector);
    tableOf(selector)->setFocus();
    QTest::keyClick(tableOf(selector), Qt::Key_Tab);
    QVERIFY(buttonOf(selector)->hasFocus());
    QTest::keyClick(buttonOf(selector), Qt::Key_Return);
    QCOMPARE(listener.taken(), QStringList{"transparentSelected, button on"});
    QTest::keyClick(buttonOf(selector), Qt::Key_Space);
    QCOMPARE(listener.taken(), QStringList{"transparentReSelected"});
}

QTEST_MAIN(ColorSelectorTest)
#include "colorselectortest.moc"
