#ifndef KY_QCOPCHANNEL_H
#define KY_QCOPCHANNEL_H

#include "kyexport.h"
#include <QByteArray>
#include <QObject>

class QCopChannelPrivate;

/**
 * A channel of messages between all processes of the session that share a HOME. A message reaches every
 * channel object open on its name in every process, the sender's included, from the event loop and never
 * during send(), in the order of sending. Messages stay inside the process while there is no session bus, and
 * once it has died; one warning tells of that.
 *
 * A channel may be deleted at any time, also in a slot of its own received(); what was still on its way to it
 * is dropped. All channels of a process belong to one thread.
 */
class KY_EXPORT QCopChannel : public QObject
{
    Q_OBJECT
public:
    /** Longest payload of a message, in bytes. */
    static constexpr qsizetype MaximumData = qsizetype{32} * 1024 * 1024;

    /** Listens from now on. @param name becomes the objectName() */
    explicit QCopChannel(const QByteArray &channel, QObject *parent = nullptr, const char *name = nullptr);
    ~QCopChannel() override;

    /** The name it listens on. */
    [[nodiscard]] QByteArray channel() const;

    /** The process that sent the last message received, as a name for isRunning(). Empty when that message
     * came without a bus. */
    [[nodiscard]] QByteArray messageSource() const;
    /** True while the process with this messageSource() lives and has its bus connection. */
    [[nodiscard]] static bool isRunning(const QByteArray &source);

    /** True when some process listens on an application's channel, "QPE/Application/NAME"; for other
     * channels, when this process does. */
    [[nodiscard]] static bool isRegistered(const QByteArray &channel);
    /**
     * True when this process listens on an application's channel and came first: of several that listen it is
     * exactly one, and the next in line when that one ends. Without a bus, every process that listens.
     */
    [[nodiscard]] static bool isFirstOn(const QByteArray &channel);

    /**
     * Sends a message. One that is sent just before main() returns or exit() is called still leaves the
     * process, for which that waits, at most 1 s for a bus that doesn't answer; one that is followed by
     * _exit() may be lost. May be called before there is an application object.
     *
     * @param message signature such as `closeFile(QString,QString)`, UTF-8 without a zero byte
     * @param data arguments in QDataStream form, at most MaximumData bytes
     * @return false, after a warning, when @p data is too long
     */
    static bool send(const QByteArray &channel, const QByteArray &message,
                     const QByteArray &data = QByteArray());

    /** Called for each message that arrives; emits received(). */
    virtual void receive(const QByteArray &message, const QByteArray &data);

signals:
    /** A message arrived; @p data holds its arguments, to be read by QCopArguments. */
    void received(const QByteArray &message, const QByteArray &data);

private:
    QCopChannelPrivate *const d;
};

#endif
