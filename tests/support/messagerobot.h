#ifndef KY_TEST_MESSAGEROBOT_H
#define KY_TEST_MESSAGEROBOT_H

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

/**
 * Answers modal message boxes while it lives, and keeps what they showed.
 *
 *     MessageRobot robot({QMessageBox::Yes});
 *     QVERIFY(KyPDataManager::checkGarbageAlert(...));
 *     QCOMPARE(robot.boxes().value(0).caption, "Defragmentation");
 *
 * Boxes beyond the given answers get the escape key.
 */
class MessageRobot
{
public:
    struct Box
    {
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QString caption;
        QString text;
        QMessageBox::StandardButtons buttons;
        QStringList buttonTexts; ///< as shown, without the marks of shortcuts
        QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
        QMessageBox::StandardButton escapeButton = QMessageBox::NoButton;
        bool hasParent = false;
        bool hadAnswer = false; ///< the wanted button was there and was pressed
    };

    explicit MessageRobot(const QList<QMessageBox::StandardButton> &answers = {}) : m_answers(answers)
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
        m_timer.start(5);
    }
    Q_DISABLE_COPY_MOVE(MessageRobot)

    /** Adds the answer to a box after those that have one. */
    void answer(QMessageBox::StandardButton button) { m_answers.append(button); }
    /** The boxes shown so far, in order. */
    [[nodiscard]] const QList<Box> &boxes() const { return m_boxes; }

private:
    void look()
    {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        m_boxes.append(describe(*box));
        const QMessageBox::StandardButton wanted =
            m_answers.isEmpty() ? QMessageBox::NoButton : m_answers.takeFirst();
        QAbstractButton *button = box->button(wanted);
        m_boxes.last().hadAnswer = button != nullptr;
        if (button)
            button->click();
        else
            QTest::keyClick(box, Qt::Key_Escape);
        if (box->isVisible()) // a box without a way out
            box->reject();
    }

    static Box describe(const QMessageBox &box)
    {
        Box seen;
        seen.icon = box.icon();
        seen.caption = box.windowTitle();
        seen.text = box.text();
        seen.buttons = box.standardButtons();
        for (const QAbstractButton *button : box.buttons())
            seen.buttonTexts.append(button->text().remove(QLatin1Char('&')));
        seen.defaultButton = box.standardButton(box.defaultButton());
        seen.escapeButton = box.standardButton(box.escapeButton());
        seen.hasParent = box.parentWidget() != nullptr;
        return seen;
    }

    QList<QMessageBox::StandardButton> m_answers;
    QList<Box> m_boxes;
    QTimer m_timer;
};

#endif
