#include "kymisc.h"

#include <array>
#include <bit>
#include <QApplication>
#include <QPointer>
#include <QThread>

namespace {

constexpr int Round = 100; // ms

/** The classic numbers of buttons, from 0 on. */
constexpr std::array ClassicButtons = {
    QMessageBox::NoButton, QMessageBox::Ok,      QMessageBox::Cancel, QMessageBox::Yes,
    QMessageBox::No,       QMessageBox::Abort,   QMessageBox::Retry,  QMessageBox::Ignore,
    QMessageBox::YesToAll, QMessageBox::NoToAll,
};

/** NoButton for a number that stands for none. */
QMessageBox::StandardButton standardButton(unsigned number)
{
    if (number < ClassicButtons.size())
        return ClassicButtons[number];
    const bool isStandard = std::has_single_bit(number) && number >= QMessageBox::FirstButton &&
                            number <= QMessageBox::LastButton;
    return isStandard ? static_cast<QMessageBox::StandardButton>(number) : QMessageBox::NoButton;
}

void addButton(QMessageBox &box, int code)
{
    const auto flags = static_cast<unsigned>(code) & QMessageBox::FlagMask;
    const QMessageBox::StandardButton button = standardButton(static_cast<unsigned>(code) & ~flags);
    if (button == QMessageBox::NoButton)
        return;
    box.addButton(button);
    if (flags & QMessageBox::Default)
        box.setDefaultButton(button);
    if (flags & QMessageBox::Escape)
        box.setEscapeButton(button);
}

} // namespace

void KyMisc::temporaryMessageBox(const QString &caption, const QString &text, int timeout,
                                 QMessageBox::Icon icon, int button0, int button1, int button2,
                                 QWidget *parent, const char *name, unsigned int flags)
{
    // Events may delete the parent, and the box with it.
    const QPointer<QMessageBox> box = new QMessageBox(icon, caption, text, QMessageBox::NoButton, parent,
                                                      static_cast<Qt::WindowFlags>(flags));
    box->setObjectName(QString::fromUtf8(name));
    box->setAttribute(Qt::WA_QuitOnClose, false); // the caller is still at work
    for (const int button : {button0, button1, button2})
        addButton(*box, button);
    box->show();
    // Closing the box doesn't end the wait: callers rely on the time.
    for (int round = 0; round < timeout; ++round) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, Round);
        QThread::msleep(Round);
    }
    delete box;
}
