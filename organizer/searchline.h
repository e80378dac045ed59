#ifndef SEARCHLINE_H
#define SEARCHLINE_H

#include <QLineEdit>
#include <QTimer>

/** A line to search with: it tells of its text a moment after the last key. Escape empties it. */
class SearchLine : public QLineEdit
{
    Q_OBJECT
public:
    explicit SearchLine(QWidget *parent = nullptr);

    /** Tells at once of a text that wasn't told of yet. */
    void flush();

signals:
    /** @param text at most Book::MaximumSearch bytes */
    void searched(const QString &text);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QTimer m_pause;
};

#endif
