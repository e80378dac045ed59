#include "taskbar.h"
#include <algorithm>
#include <optional>
#include <QFile>
#include <QStringDecoder>

namespace {

/** A message that turns something on or off. */
struct Switch
{
    const char *message;
    bool FepState::*part;
    bool value;
};
constexpr Switch Switches[] = {
    {"inputFepOnReq", &FepState::on, true},
    {"inputFepOffReq", &FepState::on, false},
    {"showInputMethod()", &FepState::visible, true},
    {"hideInputMethod()", &FepState::visible, false},
};

/** A `const char *` argument, which comes as its length with the terminating zero and that many bytes; null
 * when it is longer than @p longest or cut short. */
QByteArray readText(QCopArguments &arguments, qsizetype longest)
{
    quint32 length = 0;
    arguments >> length;
    if (arguments.status() != QDataStream::Ok || length > quint64(longest) + 1)
        return {};
    QByteArray bytes(qsizetype(length), '\0');
    if (arguments.readRawData(bytes.data(), int(length)) != int(length))
        return {};
    return {bytes.constData()}; // up to the first zero
}

/** The name of an input method; nothing for bytes that aren't one. */
std::optional<QString> methodName(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString name = decoder(bytes);
    const QList<uint> characters = name.toUcs4();
    const auto isPrintable = [](uint character) { return QChar::isPrint(char32_t(character)); };
    const bool valid = !bytes.isNull() && !decoder.hasError() &&
                       characters.size() <= TaskBar::LongestMethod &&
                       std::all_of(characters.cbegin(), characters.cend(), isPrintable);
    return valid ? std::optional(name) : std::nullopt;
}

} // namespace

TaskBar::TaskBar(const QDBusConnection &session, QObject *parent)
    : QObject(parent), m_channel("QPE/TaskBar"), m_senders(session)
{
    connect(&m_channel, &QCopChannel::received, this, &TaskBar::handleMessage);
    connect(&m_senders, &SenderWatch::ended, this, &TaskBar::unlock);
    // From the event loop, so that of many messages in a row, each of which may cost a disk some
    // milliseconds, the last state counts.
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &TaskBar::keepState);
    m_state.write();
}

TaskBar::~TaskBar()
{
    QFile::remove(FepState::file());
}

void TaskBar::handleMessage(const QByteArray &message, const QByteArray &data)
{
    QCopArguments arguments(data);
    const FepState before = m_state;
    if (message == "lockApplication(bool)")
        setLock(arguments);
    else if (message == "inputFepModeChangedReq()")
        setMode(arguments);
    else if (message == "changeInputMethod()")
        setMethod(arguments);
    else
        setSwitch(message);
    if (m_state != before && !m_timer.isActive())
        m_timer.start();
}

void TaskBar::keepState()
{
    qDebug("kyplatformd: input method \"%s\", mode %d, %s, %s", qUtf8Printable(m_state.method), m_state.mode,
           m_state.on ? "on" : "off", m_state.visible ? "shown" : "hidden");
    m_state.write();
}

void TaskBar::setSwitch(const QByteArray &message)
{
    for (const Switch &known : Switches) {
        if (message == known.message)
            m_state.*known.part = known.value;
    }
}

void TaskBar::setMode(QCopArguments &arguments)
{
    qint32 mode = 0;
    arguments >> mode;
    if (arguments.status() == QDataStream::Ok)
        m_state.mode = mode;
}

void TaskBar::setMethod(QCopArguments &arguments)
{
    constexpr qsizetype bytesOfCharacter = 4; // at most, in UTF-8
    const auto name = methodName(readText(arguments, LongestMethod * bytesOfCharacter));
    if (name)
        m_state.method = *name;
    else
        qDebug("kyplatformd: not the name of an input method");
}

void TaskBar::setLock(QCopArguments &arguments)
{
    qint32 lock = 0;
    arguments >> lock;
    if (arguments.status() != QDataStream::Ok)
        return;
    const QByteArray sender = m_channel.messageSource();
    if (lock == 0) {
        unlock(sender);
        return;
    }
    if (m_locks.contains(sender))
        return;
    qDebug("kyplatformd: %s locks the task bar", sender.constData());
    m_locks.insert(sender);
    m_senders.add(sender);
}

void TaskBar::unlock(const QByteArray &sender)
{
    if (m_locks.remove(sender))
        qDebug("kyplatformd: %s unlocks the task bar", sender.constData());
}
