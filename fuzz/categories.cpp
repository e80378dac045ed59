// A category file of any bytes: one that loads holds proper names and ids, and what is saved of it loads as
// the same; one that doesn't is never overwritten.
#include "categories.h"
#include "fuzzsupport.h"
#include "scratchfolder.h"

#include <QFile>
#include <QLoggingCategory>
#include <unistd.h>

/** Nothing here has to outlive a power cut, and a real one costs more than all the rest. */
extern "C" int fsync(int)
{
    return 0;
}

namespace {

constexpr auto Application = "Address Book";

void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    require(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

void checkNames(const Categories &categories, const QString &application)
{
    for (const QString &name : categories.labels(application)) {
        const int id = categories.id(application, name);
        require(Categories::isValidName(name) && id > 0 && categories.label(application, id) == name);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QTemporaryDir folder(scratchFolder());
    const QString given = folder.filePath(QStringLiteral("given"));
    const QString written = folder.filePath(QStringLiteral("written"));
    const QString application = QString::fromLatin1(Application);
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false"));
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    put(given, bytes);

    Categories categories;
    const bool isWhole = categories.load(given);
    const bool isNew = categories.addGlobalCategory(QStringLiteral("New")) != 0 && !isWhole;
    require(categories.save(given) == isWhole);
    require(isWhole || (isNew && contentsOf(given) == bytes));
    if (!isWhole)
        return 0;
    checkNames(categories, application);
    checkNames(categories, QString());
    QFile::remove(written);
    require(categories.save(written));
    Categories again;
    require(again.load(written) && again == categories && again.isGlobal(QStringLiteral("New")));
    return 0;
}
