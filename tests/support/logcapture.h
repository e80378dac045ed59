#ifndef KY_TEST_LOGCAPTURE_H
#define KY_TEST_LOGCAPTURE_H

#include <QString>
#include <QStringList>
#include <QtGlobal>

/** Collects the lines of qDebug() and its sisters while it lives, and passes them on. One at a time. */
class LogCapture
{
public:
    LogCapture()
    {
        current() = this;
        m_previous = qInstallMessageHandler(&LogCapture::handle);
    }
    ~LogCapture()
    {
        qInstallMessageHandler(m_previous);
        current() = nullptr;
    }
    Q_DISABLE_COPY_MOVE(LogCapture)

    /** All lines so far, in order. */
    [[nodiscard]] QStringList lines() const { return m_lines; }
    /** Those of qWarning() and above. */
    [[nodiscard]] QStringList warnings() const { return m_warnings; }
    void clear()
    {
        m_lines.clear();
        m_warnings.clear();
    }

private:
    static LogCapture *&current()
    {
        static LogCapture *capture = nullptr;
        return capture;
    }

    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &line)
    {
        LogCapture &capture = *current();
        capture.m_lines.append(line);
        if (type != QtDebugMsg && type != QtInfoMsg)
            capture.m_warnings.append(line);
        if (capture.m_previous)
            capture.m_previous(type, context, line);
    }

    QStringList m_lines;
    QStringList m_warnings;
    QtMessageHandler m_previous = nullptr;
};

#endif
