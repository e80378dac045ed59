// A settings file of any bytes: what is read from it, written, and read again stays the same.
#include "config.h"
#include "fuzzsupport.h"
#include "scratchfolder.h"

#include <QFile>
#include <unistd.h>

/** Nothing here has to outlive a power cut, and a real one costs more than all the rest. */
extern "C" int fsync(int)
{
    return 0;
}

namespace {

class Settings : public Config
{
public:
    explicit Settings(const QString &path) : Config(path, File) {}

    QMap<QString, ConfigGroup> contents() const { return groups; }

    void saveTo(const QString &path)
    {
        changed = true;
        require(write(path));
    }
};

void save(const QString &path, const uint8_t *data, size_t size)
{
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) &&
            file.write(reinterpret_cast<const char *>(data), qint64(size)) == qint64(size));
}

void readAsEveryType(Config &config, const QString &key)
{
    const int number = config.readNumEntry(key, 7);
    require(number == 7 || config.readBoolEntry(key) == (number != 0));
    const QStringList list = config.readListEntry(key, QLatin1Char(';'));
    config.writeEntry(key, list, QLatin1Char(';'));
    require(config.readListEntry(key, QLatin1Char(';')) == list);
}

QMap<QString, ConfigGroup> readAndSave(const QString &from, const QString &to)
{
    Settings settings(from);
    require(settings.isValid());
    settings.saveTo(to);
    return settings.contents();
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QTemporaryDir folder(scratchFolder());
    const QString given = folder.filePath(QStringLiteral("given"));
    const QString written = folder.filePath(QStringLiteral("written"));
    save(given, data, size);
    readAndSave(given, written);
    const auto once = readAndSave(written, written);
    require(Settings(written).contents() == once);

    Settings settings(given);
    for (const QString &group : settings.groupList()) {
        settings.setGroup(group);
        for (const QString &key : settings.contents().value(group).keys())
            readAsEveryType(settings, key);
    }
    settings.saveTo(written);
    return 0;
}
