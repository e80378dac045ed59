#include "messages.h"

namespace {

constexpr int LongestName = 60; // characters

int show(QMessageBox &box)
{
    box.setTextFormat(Qt::PlainText);
    return box.exec();
}

} // namespace

bool Messages::confirm(QWidget *parent, const QString &title, const QString &question)
{
    QMessageBox box(QMessageBox::Question, title, question, QMessageBox::Yes | QMessageBox::No, parent);
    box.setDefaultButton(QMessageBox::No);
    return show(box) == QMessageBox::Yes;
}

void Messages::inform(QWidget *parent, const QString &title, const QString &text)
{
    QMessageBox box(QMessageBox::Information, title, text, QMessageBox::Ok, parent);
    show(box);
}

void Messages::warn(QWidget *parent, const QString &title, const QString &text)
{
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, parent);
    show(box);
}

QString Messages::shortened(const QString &name)
{
    QString line = name.simplified();
    if (line.size() <= LongestName)
        return line;
    line.truncate(LongestName);
    if (line.back().isHighSurrogate()) // half a character
        line.chop(1);
    return line + QChar(0x2026);
}
