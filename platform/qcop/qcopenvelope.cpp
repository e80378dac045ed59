#include "qcopenvelope.h"
#include "qcopchannel.h"
#include <memory>
#include <QBuffer>

QCopEnvelope::QCopEnvelope(const QByteArray &channel, const QByteArray &message)
    : m_channel(channel), m_message(message)
{
    auto *buffer = new QBuffer(&m_data);
    buffer->open(QIODevice::WriteOnly);
    setDevice(buffer);
    setVersion(StreamVersion);
}

QCopEnvelope::~QCopEnvelope()
{
    const std::unique_ptr<QIODevice> buffer(device());
    setDevice(nullptr);
    QCopChannel::send(m_channel, m_message, m_data);
}
