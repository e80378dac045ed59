#ifndef KY_TEST_EDITDIALOGROBOT_H
#define KY_TEST_EDITDIALOGROBOT_H

#include <functional>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>

/** The dialog "Edit Categories" as a user sees it. */
class SeenDialog
{
public:
    explicit SeenDialog(QDialog *dialog) : m_dialog(dialog) {}

    [[nodiscard]] QDialog *widget() const { return m_dialog; }
    [[nodiscard]] QStringList names() const
    {
        QStringList names;
        for (int row = 0; row < tree()->topLevelItemCount(); ++row)
            names.append(tree()->topLevelItem(row)->text(0));
        return names;
    }
    [[nodiscard]] QStringList checked() const
    {
        QStringList names;
        for (int row = 0; row < tree()->topLevelItemCount(); ++row) {
            if (tree()->topLevelItem(row)->checkState(0) == Qt::Checked)
                names.append(tree()->topLevelItem(row)->text(0));
        }
        return names;
    }
    void check(const QString &name, bool on = true) const
    {
        const QList<QTreeWidgetItem *> items = tree()->findItems(name, Qt::MatchExactly);
        if (!items.isEmpty())
            items.first()->setCheckState(0, on ? Qt::Checked : Qt::Unchecked);
    }
    [[nodiscard]] QPushButton *button(QDialogButtonBox::StandardButton which) const
    {
        return m_dialog->findChild<QDialogButtonBox *>()->button(which);
    }
    void accept() const { button(QDialogButtonBox::Ok)->click(); }
    void cancel() const { button(QDialogButtonBox::Cancel)->click(); }

private:
    [[nodiscard]] QTreeWidget *tree() const { return m_dialog->findChild<QTreeWidget *>(); }

    QDialog *m_dialog;
};

/** Does something with each dialog "Edit Categories" that comes up while it lives; one that is open
 * afterwards is closed. */
class EditDialogRobot
{
public:
    explicit EditDialogRobot(std::function<void(const SeenDialog &)> act) : m_act(std::move(act))
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
        m_timer.start(5);
    }
    Q_DISABLE_COPY_MOVE(EditDialogRobot)

    [[nodiscard]] int dialogs() const { return m_dialogs; }

    /** The dialog that is open, null when there is none. */
    static QDialog *current()
    {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        const bool isOurs = dialog && dialog->isVisible() && dialog->windowTitle() == "Edit Categories";
        return isOurs ? dialog : nullptr;
    }

private:
    void look()
    {
        const QPointer<QDialog> dialog = current();
        if (!dialog || m_isActing)
            return;
        ++m_dialogs;
        m_isActing = true;
        m_act(SeenDialog(dialog));
        m_isActing = false;
        if (dialog && dialog->isVisible())
            dialog->reject();
    }

    std::function<void(const SeenDialog &)> m_act;
    bool m_isActing = false;
    int m_dialogs = 0;
    QTimer m_timer;
};

#endif
