#include "qcopchannel.h"
#include "sessionbus_p.h"
#include <QDBusMessage>
#include <QHash>

namespace {

constexpr auto Interface = "org.ky.QCop";
constexpr auto Member = "message";
constexpr auto ApplicationPrefix = "QPE/Application/";

QString objectPath()
{
    return QStringLiteral("/org/ky/qcop/") + SessionBus::profile();
}

/** A channel's name as it stands in the message and in the match rule, where a quote would end the rule. */
QString wireName(const QByteArray &channel)
{
    return QString::fromLatin1(channel.toPercentEncoding("/"));
}

bool isApplicationChannel(const QByteArray &channel)
{
    return channel.startsWith(ApplicationPrefix);
}

QString applicationService(const QByteArray &channel)
{
    return SessionBus::serviceName(QStringLiteral("application"),
                                   channel.mid(qsizetype(qstrlen(ApplicationPrefix))));
}

void warnOnceOfMissingBus()
{
    static bool warned = false;
    if (!warned)
        qWarning("QCopChannel: no session bus, messages stay in this process");
    warned = true;
}

} // namespace

/** Receives the bus signal, so that the channel's public face has no slot for it. */
class QCopChannelPrivate : public QObject
{
    Q_OBJECT
public:
    QCopChannelPrivate(QCopChannel *channel, const QByteArray &name);
    ~QCopChannelPrivate() override;

    static void postInside(const QByteArray &channel, const QByteArray &message, const QByteArray &data);

    /** Open channels of this process, by name. */
    static QHash<QByteArray, QList<QCopChannelPrivate *>> &open();

    QCopChannel *const q;
    const QByteArray name;
    QByteArray source;

private slots:
    void deliver(const QString &channel, const QString &message, const QByteArray &data,
                 const QDBusMessage &envelope);
};

QHash<QByteArray, QList<QCopChannelPrivate *>> &QCopChannelPrivate::open()
{
    static QHash<QByteArray, QList<QCopChannelPrivate *>> channels;
    return channels;
}

QCopChannelPrivate::QCopChannelPrivate(QCopChannel *channel, const QByteArray &channelName)
    : q(channel), name(channelName)
{
    const bool first = open()[name].isEmpty();
    open()[name].append(this);
    if (!SessionBus::isAvailable()) {
        warnOnceOfMissingBus();
        return;
    }
    SessionBus::connection().connect(QString(), objectPath(), QLatin1String(Interface), QLatin1String(Member),
                                     {wireName(name)}, QStringLiteral("ssay"), this,
                                     SLOT(deliver(QString, QString, QByteArray, QDBusMessage)));
    if (first && isApplicationChannel(name))
        SessionBus::requestName(applicationService(name), true);
}

QCopChannelPrivate::~QCopChannelPrivate()
{
    open()[name].removeOne(this);
    if (!open()[name].isEmpty())
        return;
    open().remove(name);
    if (isApplicationChannel(name))
        SessionBus::releaseName(applicationService(name));
}

void QCopChannelPrivate::deliver(const QString &channel, const QString &message, const QByteArray &data,
                                 const QDBusMessage &envelope)
{
    if (channel != wireName(name))
        return;
    source = envelope.service().toLatin1();
    q->receive(message.toUtf8(), data); // may delete this
}

void QCopChannelPrivate::postInside(const QByteArray &channel, const QByteArray &message,
                                    const QByteArray &data)
{
    for (QCopChannelPrivate *receiver : open().value(channel)) {
        const auto deliverInside = [receiver, message, data] {
            receiver->source.clear();
            receiver->q->receive(message, data);
        };
        QMetaObject::invokeMethod(receiver, deliverInside, Qt::QueuedConnection);
    }
}

QCopChannel::QCopChannel(const QByteArray &channel, QObject *parent, const char *name)
    : QObject(parent), d(new QCopChannelPrivate(this, channel))
{
    setObjectName(QString::fromUtf8(name));
}

QCopChannel::~QCopChannel()
{
    delete d;
}

QByteArray QCopChannel::channel() const
{
    return d->name;
}

QByteArray QCopChannel::messageSource() const
{
    return d->source;
}

bool QCopChannel::isRunning(const QByteArray &source)
{
    return SessionBus::hasOwner(QString::fromLatin1(source));
}

bool QCopChannel::isRegistered(const QByteArray &channel)
{
    const bool here = QCopChannelPrivate::open().contains(channel);
    return here || (isApplicationChannel(channel) && SessionBus::hasOwner(applicationService(channel)));
}

bool QCopChannel::isFirstOn(const QByteArray &channel)
{
    const bool listens = isApplicationChannel(channel) && QCopChannelPrivate::open().contains(channel);
    return listens && (!SessionBus::isAvailable() || SessionBus::isOwner(applicationService(channel)));
}

bool QCopChannel::send(const QByteArray &channel, const QByteArray &message, const QByteArray &data)
{
    if (data.size() > MaximumData) {
        qWarning("QCopChannel: message \"%s\" of %lld bytes is too long", message.constData(),
                 qlonglong(data.size()));
        return false;
    }
    if (!SessionBus::isAvailable()) {
        warnOnceOfMissingBus();
        QCopChannelPrivate::postInside(channel, message, data);
        return true;
    }
    QDBusMessage signal =
        QDBusMessage::createSignal(objectPath(), QLatin1String(Interface), QLatin1String(Member));
    signal << wireName(channel) << QString::fromUtf8(message) << data;
    return SessionBus::connection().send(signal);
}

void QCopChannel::receive(const QByteArray &message, const QByteArray &data)
{
    emit received(message, data);
}

#include "qcopchannel.moc"
