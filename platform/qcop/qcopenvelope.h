#ifndef KY_QCOPENVELOPE_H
#define KY_QCOPENVELOPE_H

#include "kyexport.h"
#include <QByteArray>
#include <QDataStream>

/**
 * Composes one message: the arguments are streamed into it, and it leaves when the envelope is destroyed.
 *
 *     QCopEnvelope e("QPE/System", "closeFile(QString,QString)");
 *     e << path << application;
 */
class KY_EXPORT QCopEnvelope : public QDataStream
{
public:
    /** The one stream version that both sides use. */
    static constexpr int StreamVersion = QDataStream::Qt_5_15;

    /** Begins a message; see QCopChannel::send() for what @p message looks like. */
    QCopEnvelope(const QByteArray &channel, const QByteArray &message);
    /** Sends the message. */
    ~QCopEnvelope();

private:
    QByteArray m_channel;
    QByteArray m_message;
    QByteArray m_data;
};

/** Reads the arguments of a received message. */
class KY_EXPORT QCopArguments : public QDataStream
{
public:
    /** @param data as QCopChannel::received() gives it. Arguments that are cut short show in status(). */
    explicit QCopArguments(const QByteArray &data) : QDataStream(data)
    {
        setVersion(QCopEnvelope::StreamVersion);
    }
};

#endif
