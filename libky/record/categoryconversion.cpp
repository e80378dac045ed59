#include "categories.h"
#include "kycategories.h"
#include <QDir>
#include <QFile>
#include <sys/stat.h>

namespace {

// The name under which events keep their categories: translations and files go by this spelling.
constexpr auto EventApplication = "Calender";

/** The ids that the table has for names, null ones left out; names that it lacks are added. */
QList<int> idsInTable(const QStringList &names)
{
    KyCategories table;
    QList<int> ids;
    for (const QString &name : names) {
        if (name.isNull())
            continue;
        const int known = table.id(name);
        if (const int id = known ? known : table.addCategory(name))
            ids.append(id);
    }
    return ids;
}

} // namespace

QString categoryFileName()
{
    const QString settings = QDir::home().filePath(QStringLiteral("Settings"));
    if (!qEnvironmentVariableIsEmpty("HOME")) // else it would be a folder in the root of the machine
        ::mkdir(QFile::encodeName(settings).constData(), 0700);
    return settings + QStringLiteral("/Categories.xml");
}

QList<int> convCategoriesPdtmToXml(const QList<int> &ids, const QString &application)
{
    Categories file;
    if (!file.load(categoryFileName()))
        return {};
    const KyCategories table;
    QStringList names;
    for (const int id : ids) {
        const QString name = table.label(id);
        if (name.isNull())
            continue;
        file.addGlobalCategory(name);
        names.append(name);
    }
    file.save(categoryFileName());
    return file.ids(application, names);
}

QList<int> convCategoriesXmlToPdtm(const QList<int> &ids, const QString &application)
{
    Categories file;
    if (ids.isEmpty() || !file.load(categoryFileName()))
        return {};
    QStringList names;
    for (const int id : ids)
        names.append(file.label(application, id));
    return idsInTable(names);
}

QList<int> convCategoriesBoxToPdtm(const QList<int> &ids, KyCategories *source)
{
    if (!source || ids.isEmpty())
        return {};
    QStringList names;
    for (const int id : ids)
        names.append(source->label(id));
    return idsInTable(names);
}

QList<int> eventCategoryPdtmToXml(const QList<int> &ids)
{
    return convCategoriesPdtmToXml(ids, QLatin1String(EventApplication));
}

QList<int> eventCategoryXmlToPdtm(const QList<int> &ids)
{
    return convCategoriesXmlToPdtm(ids, QLatin1String(EventApplication));
}
