#ifndef STATUSLINE_H
#define STATUSLINE_H

#include <QWidget>

class QLabel;

/** The line above the pages: battery on the left, date and time on the right. */
class StatusLine : public QWidget
{
    Q_OBJECT
public:
    explicit StatusLine(QWidget *parent = nullptr);

    /** What it shows, as a line of text. */
    [[nodiscard]] QString summary() const;

private:
    void refresh();

    QLabel *m_icon;
    QLabel *m_power;
    QLabel *m_time;
    QString m_shownIcon;
};

#endif
