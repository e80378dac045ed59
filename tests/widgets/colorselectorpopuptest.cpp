#include "kycolorselector.h"
#include "kycolorselectorpopup.h"
#include "kycolortable.h"
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

namespace {

constexpr int Patience = 10000; // ms

KyColorTable *tableOf(const KyColorSelectorPopup &popup)
{
    return popup.findChild<KyColorTable *>();
}

QPushButton *buttonOf(const KyColorSelectorPopup &popup)
{
    return popup.findChild<QPushButton *>();
}

/** Opens a popup and waits for it. */
void open(KyColorSelectorPopup &popup)
{
    popup.popup({40, 40});
    if (!QTest::qWaitForWindowExposed(&popup))
        qFatal("the menu isn't shown");
}

/** A click that goes to the window and finds its widget by itself, as those of a person do. */
void click(KyColorSelectorPopup &popup, const QWidget *widget, const QPoint &position,
           Qt::MouseButton button = Qt::LeftButton)
{
    QTest::mouseClick(popup.windowHandle(), button, {}, widget->mapTo(&popup, position));
}

void tapCell(KyColorSelectorPopup &popup, int row, int col, Qt::MouseButton button = Qt::LeftButton)
{
    click(popup, tableOf(popup)->viewport(), {col * 20 + 10, row * 18 + 9}, button);
}

void tapButton(KyColorSelectorPopup &popup)
{
    click(popup, buttonOf(popup), buttonOf(popup)->rect().center());
}

/** A key that goes to the window and finds the focus by itself. */
void type(KyColorSelectorPopup &popup, Qt::Key key)
{
    QTest::keyClick(popup.windowHandle(), key);
}

/** Keeps the signals of a popup in their order, with "shown" where the menu is still open. */
class Listener : public QObject
{
public:
    explicit Listener(const KyColorSelectorPopup *popup) : m_popup(popup)
    {
        connect(popup, &KyColorSelectorPopup::selected, this,
                [this](QRgb color) { note("selected " + QString::number(color, 16)); });
        connect(popup, &KyColorSelectorPopup::transparentSelected, this,
                [this] { note("transparentSelected"); });
    }

    /** What came since the last call. */
    [[nodiscard]] QStringList taken() { return std::exchange(m_heard, {}); }

private:
    void note(const QString &what) { m_heard.append(m_popup->isVisible() ? what + ", shown" : what); }

    const KyColorSelectorPopup *m_popup;
    QStringList m_heard;
};

} // namespace

class ColorSelectorPopupTest : public QObject
{
    Q_OBJECT
private slots:
    void selectorIsTheOnlyItem();
    void takesNameAndStaysAPopup();
    void showsAllCells();
    void everyCellClosesThenTells();
    void chosenColourAgainOnlyCloses();
    void transparencyClosesThenTells();
    void transparencyAgainOnlyCloses();
    void transparencyAndColourTakeTurns();
    void execReturnsAfterAChoice();
    void execReturnsAfterEscape();
    void escapeClosesSilently();
    void focusIsInTheTable();
    void focusIsInTheTableEachTime();
    void arrowKeysStayInTheTable();
    void keyboardChoosesTransparency_data();
    void keyboardChoosesTransparency();
    void otherMouseButtonsLeaveItOpen();
    void besideTheGridLeavesItOpen();
    void colourSetBeforeShowingIsMarked();
    void colourSetAfterTransparencyDoesNoHarm();
    void colourSetWhileShownClosesWhenTransparencyWasOn();
    void transparencySetByTheApplicationIsTold();
    void selectedColourSurvivesSetCurrentColor();
    void menuThatGoesWhenItCloses();
};

void ColorSelectorPopupTest::selectorIsTheOnlyItem()
{
    const KyColorSelectorPopup popup(true);
    QCOMPARE(popup.actions().size(), 1);
    QCOMPARE(popup.findChildren<KyColorSelector *>().size(), 1);
    QVERIFY(buttonOf(popup));
    const KyColorSelectorPopup plain(false);
    QVERIFY(!buttonOf(plain));
}

void ColorSelectorPopupTest::takesNameAndStaysAPopup()
{
    const KyColorSelectorPopup popup(true, nullptr, "popup", Qt::FramelessWindowHint);
    QCOMPARE(popup.objectName(), "popup");
    QCOMPARE(popup.windowType(), Qt::Popup);
    QVERIFY(popup.windowFlags() & Qt::FramelessWindowHint);
}

void ColorSelectorPopupTest::showsAllCells()
{
    for (const bool withTransparent : {false, true}) {
        KyColorSelectorPopup popup(withTransparent);
        open(popup);
        QVERIFY(tableOf(popup)->viewport()->width() >= 160);
        QVERIFY(tableOf(popup)->viewport()->height() >= 108);
    }
}

void ColorSelectorPopupTest::everyCellClosesThenTells()
{
    KyColorSelectorPopup popup(true);
    Listener listener(&popup);
    for (int cell = 0; cell < 48; ++cell) {
        open(popup);
        tapCell(popup, cell / 8, cell % 8);
        QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
        QCOMPARE(listener.taken(),
                 QStringList{"selected " + QString::number(KyColorTable::defColors[cell], 16)});
    }
}

void ColorSelectorPopupTest::chosenColourAgainOnlyCloses()
{
    KyColorSelectorPopup popup(true);
    open(popup);
    tapCell(popup, 2, 5);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    Listener listener(&popup);
    open(popup);
    tapCell(popup, 2, 5);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(), QStringList());
}

void ColorSelectorPopupTest::transparencyClosesThenTells()
{
    KyColorSelectorPopup popup(true);
    Listener listener(&popup);
    open(popup);
    tapButton(popup);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(), QStringList{"transparentSelected"});
}

void ColorSelectorPopupTest::transparencyAgainOnlyCloses()
{
    KyColorSelectorPopup popup(true);
    open(popup);
    tapButton(popup);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    Listener listener(&popup);
    open(popup);
    tapButton(popup);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(), QStringList());
}

void ColorSelectorPopupTest::transparencyAndColourTakeTurns()
{
    KyColorSelectorPopup popup(true);
    Listener listener(&popup);
    open(popup);
    tapButton(popup);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    open(popup);
    tapCell(popup, 1, 0);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    open(popup);
    tapButton(popup);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(),
             (QStringList{"transparentSelected", "selected ffff0000", "transparentSelected"}));
}

void ColorSelectorPopupTest::execReturnsAfterAChoice()
{
    KyColorSelectorPopup popup(false);
    Listener listener(&popup);
    QTimer timer;
    connect(&timer, &QTimer::timeout, &popup, [&popup] {
        if (popup.windowHandle() && popup.windowHandle()->isExposed())
            tapCell(popup, 4, 0);
    });
    timer.start(50);
    popup.exec({40, 40});
    timer.stop();
    QVERIFY(!popup.isVisible());
    QCOMPARE(listener.taken(), QStringList{"selected ff0000ff"});
}

void ColorSelectorPopupTest::execReturnsAfterEscape()
{
    KyColorSelectorPopup popup(false);
    Listener listener(&popup);
    QTimer timer;
    connect(&timer, &QTimer::timeout, &popup, [&popup] {
        if (popup.windowHandle() && popup.windowHandle()->isExposed())
            type(popup, Qt::Key_Escape);
    });
    timer.start(50);
    popup.exec({40, 40});
    timer.stop();
    QCOMPARE(listener.taken(), QStringList());
}

void ColorSelectorPopupTest::escapeClosesSilently()
{
    KyColorSelectorPopup popup(true);
    Listener listener(&popup);
    popup.setCurrentColor(0xffff0000);
    open(popup);
    type(popup, Qt::Key_Escape);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    open(popup);
    type(popup, Qt::Key_Tab);
    QTRY_COMPARE_WITH_TIMEOUT(popup.focusWidget(), buttonOf(popup), Patience);
    type(popup, Qt::Key_Escape);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(), QStringList());
}

void ColorSelectorPopupTest::focusIsInTheTable()
{
    for (const bool withTransparent : {false, true}) {
        KyColorSelectorPopup popup(withTransparent);
        Listener listener(&popup);
        open(popup);
        QTRY_COMPARE_WITH_TIMEOUT(popup.focusWidget(), tableOf(popup), Patience);
        type(popup, Qt::Key_Down);
        type(popup, Qt::Key_Down);
        type(popup, Qt::Key_Right);
        type(popup, Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
        QCOMPARE(listener.taken(), QStringList{"selected ffffccff"});
    }
}

void ColorSelectorPopupTest::focusIsInTheTableEachTime()
{
    KyColorSelectorPopup popup(true);
    open(popup);
    type(popup, Qt::Key_Tab);
    QTRY_COMPARE_WITH_TIMEOUT(popup.focusWidget(), buttonOf(popup), Patience);
    type(popup, Qt::Key_Escape);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    open(popup);
    QTRY_COMPARE_WITH_TIMEOUT(popup.focusWidget(), tableOf(popup), Patience);
}

void ColorSelectorPopupTest::arrowKeysStayInTheTable()
{
    KyColorSelectorPopup popup(true);
    Listener listener(&popup);
    open(popup);
    for (int row = 0; row < 8; ++row)
        type(popup, Qt::Key_Down);
    for (int col = 0; col < 9; ++col)
        type(popup, Qt::Key_Right);
    QVERIFY(popup.isVisible());
    QCOMPARE(popup.focusWidget(), tableOf(popup));
    type(popup, Qt::Key_Enter);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(), QStringList{"selected ff000033"});
}

void ColorSelectorPopupTest::keyboardChoosesTransparency_data()
{
    QTest::addColumn<Qt::Key>("way");
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("tab, return") << Qt::Key_Tab << Qt::Key_Return;
    QTest::newRow("tab, space") << Qt::Key_Tab << Qt::Key_Space;
    QTest::newRow("backtab, return") << Qt::Key_Backtab << Qt::Key_Return;
}

void ColorSelectorPopupTest::keyboardChoosesTransparency()
{
    QFETCH(Qt::Key, way);
    QFETCH(Qt::Key, key);
    KyColorSelectorPopup popup(true);
    Listener listener(&popup);
    open(popup);
    type(popup, way);
    QTRY_COMPARE_WITH_TIMEOUT(popup.focusWidget(), buttonOf(popup), Patience);
    type(popup, way);
    QTRY_COMPARE_WITH_TIMEOUT(popup.focusWidget(), tableOf(popup), Patience);
    type(popup, way);
    type(popup, key);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(), QStringList{"transparentSelected"});
}

void ColorSelectorPopupTest::otherMouseButtonsLeaveItOpen()
{
    KyColorSelectorPopup popup(true);
    Listener listener(&popup);
    open(popup);
    tapCell(popup, 2, 2, Qt::RightButton);
    tapCell(popup, 2, 2, Qt::MiddleButton);
    QTest::qWait(50);
    QVERIFY(popup.isVisible());
    tapCell(popup, 2, 2);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(), QStringList{"selected ffffff99"});
}

void ColorSelectorPopupTest::besideTheGridLeavesItOpen()
{
    KyColorSelectorPopup popup(false);
    Listener listener(&popup);
    popup.setMinimumWidth(300);
    open(popup);
    QVERIFY(tableOf(popup)->viewport()->width() > 200);
    click(popup, tableOf(popup)->viewport(), {190, 50});
    QTest::qWait(50);
    QVERIFY(popup.isVisible());
    QCOMPARE(listener.taken(), QStringList());
}

void ColorSelectorPopupTest::colourSetBeforeShowingIsMarked()
{
    KyColorSelectorPopup popup(false);
    Listener listener(&popup);
    popup.setCurrentColor(0xff8080ff);
    open(popup);
    type(popup, Qt::Key_Return);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(), QStringList{"selected ff8080ff"});
}

void ColorSelectorPopupTest::colourSetAfterTransparencyDoesNoHarm()
{
    QPointer<KyColorSelectorPopup> popup = new KyColorSelectorPopup(true);
    popup->setAttribute(Qt::WA_DeleteOnClose);
    popup->setCurrentColorTransparent();
    Listener listener(popup);
    popup->setCurrentColor(0xff8080ff);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(popup);
    QCOMPARE(listener.taken(), QStringList());
    open(*popup);
    QVERIFY(!buttonOf(*popup)->isChecked());
    type(*popup, Qt::Key_Return);
    QTRY_VERIFY_WITH_TIMEOUT(!popup, Patience);
    QCOMPARE(listener.taken(), QStringList{"selected ff8080ff"});
}

void ColorSelectorPopupTest::colourSetWhileShownClosesWhenTransparencyWasOn()
{
    KyColorSelectorPopup popup(true);
    popup.setCurrentColorTransparent();
    Listener listener(&popup);
    open(popup);
    popup.setCurrentColor(0xff8080ff);
    QVERIFY(!popup.isVisible());
    open(popup);
    popup.setCurrentColor(0xffff0000);
    QVERIFY(popup.isVisible());
    QCOMPARE(listener.taken(), QStringList());
}

void ColorSelectorPopupTest::transparencySetByTheApplicationIsTold()
{
    KyColorSelectorPopup popup(true);
    Listener listener(&popup);
    popup.setCurrentColorTransparent();
    QCOMPARE(listener.taken(), QStringList{"transparentSelected"});
    popup.setCurrentColorTransparent();
    QCOMPARE(listener.taken(), QStringList());
    popup.setCurrentColor(0xffff0000);
    open(popup);
    popup.setCurrentColorTransparent();
    QVERIFY(!popup.isVisible());
    QCOMPARE(listener.taken(), QStringList{"transparentSelected"});
}

void ColorSelectorPopupTest::selectedColourSurvivesSetCurrentColor()
{
    KyColorSelectorPopup popup(false);
    Listener listener(&popup);
    open(popup);
    tapCell(popup, 1, 0);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(), QStringList{"selected ffff0000"});
    popup.setCurrentColor(0xff0000ff);
    open(popup);
    tapCell(popup, 1, 0);
    QTRY_VERIFY_WITH_TIMEOUT(!popup.isVisible(), Patience);
    QCOMPARE(listener.taken(), QStringList());
}

void ColorSelectorPopupTest::menuThatGoesWhenItCloses()
{
    QPointer<KyColorSelectorPopup> popup = new KyColorSelectorPopup(true);
    popup->setAttribute(Qt::WA_DeleteOnClose);
    Listener listener(popup);
    open(*popup);
    tapCell(*popup, 1, 0);
    QTRY_VERIFY_WITH_TIMEOUT(!popup, Patience);
    QCOMPARE(listener.taken(), QStringList{"selected ffff0000"});
}

QTEST_MAIN(ColorSelectorPopupTest)
#include "colorselectorpopuptest.moc"
