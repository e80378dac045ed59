#include "warning_p.h"
#include <QPointer>

QMessageBox::StandardButton showWarning(QWidget *parent, const QString &caption, const QString &text,
                                        QMessageBox::StandardButtons buttons,
                                        QMessageBox::StandardButton usual)
{
    const QPointer<QMessageBox> box = new QMessageBox(QMessageBox::Warning, caption, text, buttons, parent);
    box->setDefaultButton(usual);
    box->setEscapeButton(usual);
    const auto answer = static_cast<QMessageBox::StandardButton>(box->exec());
    delete box;
    return answer;
}
