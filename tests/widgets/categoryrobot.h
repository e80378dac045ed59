#ifndef KY_TEST_CATEGORYROBOT_H
#define KY_TEST_CATEGORYROBOT_H

#include "kycategorydialog.h"
#include <optional>
#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

/**
 * Answers the dialogs for the name of a category while it lives, and keeps what they showed. One that stays
 * open gets the next answer.
 *
 *     CategoryRobot robot({"Friends"});
 *     edit.slotAdd();
 *     QCOMPARE(robot.dialogs().value(0).caption, "Add");
 *
 * Beyond the given answers they are cancelled. Message boxes of the dialog are for a MessageRobot beside it.
 */
class CategoryRobot
{
public:
    using Answer = std::optional<QString>; ///< a name to type, before "OK" is pressed; none presses "Cancel"

    struct Dialog
    {
        QString caption;
        QString prompt;
        QString text;          ///< in the line
        QString selectedText;  ///< of the line
        bool hasFocus = false; ///< the line has it
        bool isModal = false;
        bool hasParent = false;
    };

    explicit CategoryRobot(const QList<Answer> &answers = {}) : m_answers(answers)
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
        m_timer.start(5);
    }
    Q_DISABLE_COPY_MOVE(CategoryRobot)

    /** What there was to answer so far, in order. */
    [[nodiscard]] const QList<Dialog> &dialogs() const { return m_dialogs; }

private:
    void look()
    {
        auto *dialog = qobject_cast<KyCategoryDialog *>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        auto *line = dialog->findChild<QLineEdit *>();
        auto *buttons = dialog->findChild<QDialogButtonBox *>();
        m_dialogs.append(describe(*dialog, *line));
        const Answer answer = m_answers.isEmpty() ? std::nullopt : m_answers.takeFirst();
        if (answer)
            line->setText(*answer);
        buttons->button(answer ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
    }

    static Dialog describe(const KyCategoryDialog &dialog, const QLineEdit &line)
    {
        return {.caption = dialog.windowTitle(),
                .prompt = dialog.findChild<QLabel *>()->text(),
                .text = line.text(),
                .selectedText = line.selectedText(),
                .hasFocus = dialog.focusWidget() == &line,
                .isModal = dialog.isModal(),
                .hasParent = dialog.parentWidget() != nullptr};
    }

    QList<Answer> m_answers;
    QList<Dialog> m_dialogs;
    QTimer m_timer;
};

#endif
