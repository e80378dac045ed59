#include "memoform.h"

#include <QFormLayout>
#include <QLineEdit>
#include <QPlainTextEdit>

namespace {

constexpr int LongestTitle = 60; // characters, of one that is taken from the contents

QString firstLine(const QString &contents)
{
    QString line = contents.trimmed().section(QLatin1Char('\n'), 0, 0).left(LongestTitle);
    if (!line.isEmpty() && line.back().isHighSurrogate()) // half a character
        line.chop(1);
    return line.trimmed();
}

} // namespace

MemoForm::MemoForm(Book *book, CategoryTable *table, QWidget *parent)
    : CardForm(book, table,
               {tr("Memos"), tr("Write something before you save the memo."),
                tr("The memo could not be saved. The storage may be full."),
                tr("The memos are in use by another application. Try again in a moment.")},
               parent),
      m_title(new QLineEdit), m_contents(makeTextEditor())
{
    m_title->setPlaceholderText(tr("The first line, if you leave this empty"));
    auto *form = new QFormLayout;
    form->addRow(tr("Title"), m_title);
    form->addRow(tr("Contents"), m_contents);
    body()->addLayout(form);
    addEnd();
}

void MemoForm::show(const CardValues &values)
{
    m_title->setText(values.value(MemoField::Title).toString());
    m_title->setCursorPosition(0);
    m_contents->setPlainText(values.value(MemoField::Contents).toString());
    m_contents->setFocus();
}

CardValues MemoForm::shown() const
{
    return {{MemoField::Title, m_title->text().trimmed()}, {MemoField::Contents, m_contents->toPlainText()}};
}

bool MemoForm::complete(CardValues &changed, const CardValues &) const
{
    QString title = m_title->text().trimmed();
    if (title.isEmpty()) {
        title = firstLine(m_contents->toPlainText());
        changed.insert(MemoField::Title, title);
    }
    changed.insert(MemoField::ChangeTime, QDateTime::currentDateTime());
    return !title.isEmpty();
}
