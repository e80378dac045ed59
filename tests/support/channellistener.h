#ifndef KY_TEST_CHANNELLISTENER_H
#define KY_TEST_CHANNELLISTENER_H

#include "qcopchannel.h"
#include <QList>
#include <QPair>
#include <QTest>

/** Keeps what arrives on a channel while it lives. */
class ChannelListener
{
public:
    using Message = QPair<QByteArray, QByteArray>; ///< signature and arguments

    explicit ChannelListener(const QByteArray &channel) : m_channel(channel)
    {
        QObject::connect(&m_channel, &QCopChannel::received,
                         [this](const QByteArray &message, const QByteArray &data) {
                             m_messages.append({message, data});
                         });
    }
    Q_DISABLE_COPY_MOVE(ChannelListener)

    /** All that was sent before this call, in order, and forgets it. What is under way comes in front of a
     * message of our own. */
    [[nodiscard]] QList<Message> take()
    {
        const QByteArray mark = "listenerMark()";
        QCopChannel::send(m_channel.channel(), mark);
        const auto isMarked = [&] { return !m_messages.isEmpty() && m_messages.last().first == mark; };
        if (QTest::qWaitFor(isMarked, 10000))
            m_messages.removeLast();
        return std::exchange(m_messages, {});
    }

private:
    QCopChannel m_channel;
    QList<Message> m_messages;
};

#endif
