#include "categories.h"
#include "kycategories.h"
#include <QDir>
#include <QFile>
#include <sys/stat.h>

namespace {

// The name under which events keep their categories: translations and files go by this spelling.
constexpr auto EventApplication = "Calender";

/** The id of a category of the table, which is added unless it is there; 0 on failure. */
int idInTable(KyCategories &table, const QString &name)
{
    return table.exists(name) ? table.id(name) : table.addCategory(name);
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
    KyCategories table;
    QList<int> converted;
    for (const int id : ids) {
        const QString name = file.label(application, id);
        const int idOfTable = name.isNull() ? 0 : idInTable(table, name);
        if (idOfTable)
            converted.append(idOfTable);
    }
    return converted;
}

QList<int> convCategoriesBoxToPdtm(const QList<int> &ids, KyCategories *source)
{
    if (!source || ids.isEmpty())
        return {};
    KyCategories table;
    QList<int> converted;
    for (const int id : ids) {
        const QString name = source->label(id);
        const int idOfTable = name.isNull() ? 0 : idInTable(table, name);
        if (idOfTable)
            converted.append(idOfTable);
    }
    return converted;
}

QList<int> eventCategoryPdtmToXml(const QList<int> &ids)
{
    return convCategoriesPdtmToXml(ids, QLatin1String(EventApplication));
}

QList<int> eventCategoryXmlToPdtm(const QList<int> &ids)
{
    return convCategoriesXmlToPdtm(ids, QLatin1String(EventApplication));
}
