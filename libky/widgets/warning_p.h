#ifndef WARNING_P_H
#define WARNING_P_H

#include <QMessageBox>

/**
 * Shows a warning until the user answers it. What happens meanwhile may delete the parent, and the box with
 * it.
 * @param usual the answer of the Enter and of the Escape key @return the answer, NoButton when there was none
 */
QMessageBox::StandardButton showWarning(QWidget *parent, const QString &caption, const QString &text,
                                        QMessageBox::StandardButtons buttons = QMessageBox::Ok,
                                        QMessageBox::StandardButton usual = QMessageBox::Ok);

#endif
