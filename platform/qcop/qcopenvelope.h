#ifndef QCOPENVELOPE_H
#define QCOPENVELOPE_H

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

    QCopEnvelope(const QByteArray &channel, const QByteArray &message);
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
    explicit QCopArguments(const QByteArray &data) : QDataStream(data)
    {
        setVersion(QCopEnvelope::StreamVersion);
    }
};

#endif
