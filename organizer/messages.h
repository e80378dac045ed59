#ifndef MESSAGES_H
#define MESSAGES_H

#include <QMessageBox>

/** Message boxes whose texts may hold what users and files bring along: nothing in it counts as markup. */
namespace Messages {

/** Asks a question whose safe answer is No. @return true for Yes */
[[nodiscard]] bool confirm(QWidget *parent, const QString &title, const QString &question);
void inform(QWidget *parent, const QString &title, const QString &text);
void warn(QWidget *parent, const QString &title, const QString &text);
/** A name as it fits into a sentence: in one line, a long one cut. */
[[nodiscard]] QString shortened(const QString &name);

} // namespace Messages

#endif
