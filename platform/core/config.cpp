#include "config.h"

#include "replacefile_p.h"
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

namespace {

constexpr char byteOrderMark[] = "\xEF\xBB\xBF";

QString pathOf(const QString &name, Config::Domain domain)
{
    if (domain == Config::File)
        return name;
    const QString settings = QDir::home().filePath(QStringLiteral("Settings"));
    if (!qEnvironmentVariableIsEmpty("HOME")) // else it would be a folder in the root of the machine
        QDir().mkpath(settings);
    return settings + QLatin1Char('/') + name + QStringLiteral(".conf");
}

/** Unlike QString::fromUtf8() this keeps a U+FEFF in front. */
QString fromUtf8(const QByteArray &bytes)
{
    using Flag = QStringDecoder::Flag;
    return QStringDecoder(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom).decode(bytes);
}

bool isHeader(const QByteArray &line)
{
    return line.startsWith('[') && line.endsWith(']');
}

/** True for a key that reads back as it was written. */
bool isKey(const QString &key)
{
    const QByteArray bytes = key.toUtf8();
    return !bytes.isEmpty() && bytes == bytes.trimmed() && !bytes.contains('=') && !bytes.contains('\n') &&
           !bytes.contains('\r') && !bytes.startsWith('[') && !bytes.startsWith('#') &&
           !bytes.startsWith(byteOrderMark);
}

QString onOneLine(QString text)
{
    return text.replace(QLatin1Char('\n'), QLatin1Char(' ')).replace(QLatin1Char('\r'), QLatin1Char(' '));
}

QString textOf(const ConfigGroup &group)
{
    QString text;
    for (auto entry = group.cbegin(); entry != group.cend(); ++entry)
        text += entry.key() + QStringLiteral(" = ") + onOneLine(entry.value()) + QLatin1Char('\n');
    return text;
}

QString textOf(const QMap<QString, ConfigGroup> &groups)
{
    QString text;
    for (auto group = groups.cbegin(); group != groups.cend(); ++group) {
        if (!group.key().isEmpty())
            text += QLatin1Char('[') + onOneLine(group.key()) + QStringLiteral("]\n");
        text += textOf(group.value());
    }
    return text;
}

QString escaped(QString item, QChar separator)
{
    item.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    return item.replace(separator, QLatin1Char('\\') + QString(separator));
}

} // namespace

Config::Config(const QString &name, Domain domain) : filename(pathOf(name, domain))
{
    read();
}

Config::~Config()
{
    (void)write();
}

bool Config::isValid() const
{
    return readable;
}

bool Config::hasGroup(const QString &group) const
{
    return groups.contains(group);
}

QStringList Config::groupList() const
{
    return groups.keys();
}

void Config::setGroup(const QString &group)
{
    git = groups.find(group);
    if (git == groups.end())
        git = groups.insert(group, ConfigGroup());
}

const ConfigGroup *Config::currentGroup() const
{
    const QMap<QString, ConfigGroup>::ConstIterator current = git;
    return current == groups.cend() ? nullptr : &current.value();
}

bool Config::hasKey(const QString &key) const
{
    const ConfigGroup *group = currentGroup();
    return group && group->contains(key);
}

QString Config::readEntry(const QString &key, const QString &defaultValue) const
{
    const ConfigGroup *group = currentGroup();
    return group ? group->value(key, defaultValue) : defaultValue;
}

int Config::readNumEntry(const QString &key, int defaultValue) const
{
    bool isNumber = false;
    const int number = readEntry(key).toInt(&isNumber);
    return isNumber ? number : defaultValue;
}

bool Config::readBoolEntry(const QString &key, bool defaultValue) const
{
    const QString value = readEntry(key).toLower();
    if (value == QLatin1String("true") || value == QLatin1String("yes") || value == QLatin1String("on"))
        return true;
    if (value == QLatin1String("false") || value == QLatin1String("no") || value == QLatin1String("off"))
        return false;
    return readNumEntry(key, defaultValue) != 0;
}

QStringList Config::readListEntry(const QString &key, QChar separator) const
{
    const QString value = readEntry(key);
    if (value.isEmpty())
        return {};
    QStringList list{QString()};
    for (qsizetype i = 0; i < value.size(); ++i) {
        const bool isEscaped = value[i] == QLatin1Char('\\') && i + 1 < value.size() &&
                               (value[i + 1] == separator || value[i + 1] == QLatin1Char('\\'));
        if (isEscaped)
            list.last() += value[++i];
        else if (value[i] == separator)
            list.append(QString());
        else
            list.last() += value[i];
    }
    return list;
}

void Config::writeEntry(const QString &key, const QString &value)
{
    if (!isKey(key)) {
        qWarning("a settings file can't hold the key \"%s\"", qPrintable(key));
        return;
    }
    if (hasKey(key) && readEntry(key) == value)
        return;
    if (git == groups.end())
        setGroup(QString());
    git.value().insert(key, value);
    changed = true;
}

void Config::writeEntry(const QString &key, const char *value)
{
    writeEntry(key, QString::fromUtf8(value));
}

void Config::writeEntry(const QString &key, int value)
{
    writeEntry(key, QString::number(value));
}

void Config::writeEntry(const QString &key, bool value)
{
    writeEntry(key, value ? 1 : 0);
}

void Config::writeEntry(const QString &key, const QStringList &list, QChar separator)
{
    QStringList items;
    for (const QString &item : list)
        items.append(escaped(item, separator));
    writeEntry(key, items.join(separator));
}

void Config::removeEntry(const QString &key)
{
    if (hasKey(key)) {
        git.value().remove(key);
        changed = true;
    }
}

void Config::clearGroup()
{
    const ConfigGroup *group = currentGroup();
    if (group && !group->isEmpty()) {
        git.value().clear();
        changed = true;
    }
}

bool Config::write(const QString &file)
{
    if (!file.isEmpty() && file != filename) {
        filename = file;
        changed = true;
        hidden = false;
    }
    if (!changed)
        return true;
    if (hidden) {
        qWarning("could not read %s, so it isn't replaced", qPrintable(filename));
        return false;
    }
    changed = !replaceFile(filename, textOf(groups).toUtf8());
    return !changed;
}

void Config::read()
{
    groups.clear();
    QFile file(filename);
    // Anything but a plain file may block or never end.
    readable = QFileInfo(filename).isFile() && file.open(QIODevice::ReadOnly);
    hidden = !readable && file.exists();
    if (readable) {
        QByteArray contents = file.readAll();
        if (contents.startsWith(byteOrderMark))
            contents.remove(0, sizeof byteOrderMark - 1);
        parse(contents);
    }
    git = groups.find(QString());
    changed = false;
}

void Config::parse(const QByteArray &contents)
{
    git = groups.end();
    for (const QByteArray &rawLine : contents.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        const qsizetype equals = line.indexOf('=');
        if (isHeader(line)) {
            setGroup(fromUtf8(line.mid(1, line.size() - 2)));
        } else if (const QString key = fromUtf8(line.left(equals).trimmed()); equals > 0 && isKey(key)) {
            if (git == groups.end())
                setGroup(QString());
            git.value().insert(key, fromUtf8(line.mid(equals + 1).trimmed()));
        }
    }
}
