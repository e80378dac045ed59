#include "searchline.h"

#include "book.h"

#include <QKeyEvent>
#include <QValidator>

namespace {

constexpr int Pause = 150; // ms after the last key

/* What is in the line is what is searched for: a longer text isn't taken. One that is pasted is cut. */
class LengthValidator : public QValidator
{
public:
    using QValidator::QValidator;

    State validate(QString &text, int &position) const override
    {
        while (text.toUtf8().size() > Book::MaximumSearch)
            text.chop(text.back().isLowSurrogate() && text.size() > 1 ? 2 : 1);
        position = qMin(position, static_cast<int>(text.size()));
        return Acceptable;
    }
};

} // namespace

SearchLine::SearchLine(QWidget *parent) : QLineEdit(parent)
{
    setPlaceholderText(tr("Search"));
    setClearButtonEnabled(true);
    setValidator(new LengthValidator(this));
    m_pause.setSingleShot(true);
    m_pause.setInterval(Pause);
    connect(this, &QLineEdit::textChanged, &m_pause, qOverload<>(&QTimer::start));
    connect(this, &QLineEdit::returnPressed, this, &SearchLine::flush);
    connect(&m_pause, &QTimer::timeout, this, [this] { emit searched(text()); });
}

void SearchLine::flush()
{
    if (!m_pause.isActive())
        return;
    m_pause.stop();
    emit searched(text());
}

void SearchLine::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    clear();
    flush();
}
