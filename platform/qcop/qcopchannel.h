#ifndef QCOPCHANNEL_H
#define QCOPCHANNEL_H

#include "kyexport.h"
#include <QByteArray>
#include <QObject>

class QCopChannelPrivate;

/**
 * A channel of messages between all processes of the session. A message reaches every channel object open on its
 * name in every process, the sender's included, from the event loop, in the order of sending. Without a session
 * bus messages stay inside the process.
 */
class KY_EXPORT QCopChannel : public QObject
{
    Q_OBJECT
public:
    explicit QCopChannel(const QByteArray &channel, QObject *parent = nullptr, const char *name = nullptr);
    ~QCopChannel() override;

    [[nodiscard]] QByteArray channel() const;

    /** True when some process listens on an application's channel, "QPE/Application/NAME"; for other channels,
     * when this process does. */
    [[nodiscard]] static bool isRegistered(const QByteArray &channel);
    /** @param message signature such as `closeFile(QString,QString)` @param data arguments in QDataStream form */
    static bool send(const QByteArray &channel, const QByteArray &message,
                     const QByteArray &data = QByteArray());

signals:
    void received(const QByteArray &message, const QByteArray &data);

private:
    QCopChannelPrivate *const d;
};

#endif
