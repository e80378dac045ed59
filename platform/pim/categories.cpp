#include "categories.h"

#include "categoryfile_p.h"
#include "folderlock_p.h"
#include "replacefile_p.h"
#include <algorithm>
#include <limits>
#include <QCryptographicHash>
#include <QDebug>
#include <QFileInfo>
#include <QtEndian>

class CategoriesPrivate : public QSharedData
{
public:
    CategoryGroups groups;
    CategoryGroups saved; ///< what the file held when it was last read or written
    QString file;         ///< the path of that file

    [[nodiscard]] int idOf(const QString &application, const QString &name) const
    {
        return groups.value(application).value(name);
    }

    /** The group that has a category: the application's own, else the global one; null when neither has. */
    [[nodiscard]] CategoryGroup *groupOf(const QString &application, const QString &name);
};

namespace {

const QString Global; // the name of the global group

/** Where a category stands. */
struct Place
{
    QString application;
    QString name;
    bool operator==(const Place &) const = default;
};

QMap<int, Place> placesOf(const CategoryGroups &groups)
{
    QMap<int, Place> places;
    for (auto group = groups.cbegin(); group != groups.cend(); ++group) {
        for (auto category = group->cbegin(); category != group->cend(); ++category)
            places.insert(category.value(), {group.key(), category.key()});
    }
    return places;
}

bool hasId(const CategoryGroups &groups, int id)
{
    return std::ranges::any_of(
        groups, [id](const CategoryGroup &group) { return std::ranges::find(group, id) != group.end(); });
}

/** A positive number that is the same for the same place in every process. */
int numberOf(const Place &place)
{
    const QByteArray text = place.application.toUtf8() + '\0' + place.name.toUtf8();
    const QByteArray hash = QCryptographicHash::hash(text, QCryptographicHash::Sha256);
    return qMax(1, qFromBigEndian<qint32>(hash.constData()) & std::numeric_limits<qint32>::max());
}

int freeId(const CategoryGroups &groups, int wanted)
{
    while (hasId(groups, wanted))
        wanted = wanted == std::numeric_limits<int>::max() ? 1 : wanted + 1;
    return wanted;
}

/** @return the id of the category, which is there before or afterwards */
int add(CategoryGroups &groups, const Place &place, int wanted)
{
    int &id = groups[place.application][place.name];
    if (id == 0)
        id = freeId(groups, wanted);
    return id;
}

void remove(CategoryGroups &groups, const Place &place)
{
    groups[place.application].remove(place.name);
    if (groups[place.application].isEmpty())
        groups.remove(place.application);
}

/** What others have made of a file, with the changes from @p old to @p own. */
CategoryGroups merged(const CategoryGroups &own, const CategoryGroups &old, CategoryGroups others)
{
    const QMap<int, Place> oldPlaces = placesOf(old);
    const QMap<int, Place> ownPlaces = placesOf(own);
    const QMap<int, Place> otherPlaces = placesOf(others);
    const auto isChanged = [&](int id) { return ownPlaces.value(id) != oldPlaces.value(id); };
    for (auto place = otherPlaces.cbegin(); place != otherPlaces.cend(); ++place) {
        if (oldPlaces.contains(place.key()) && isChanged(place.key()))
            remove(others, place.value());
    }
    for (auto place = ownPlaces.cbegin(); place != ownPlaces.cend(); ++place) {
        const int id = place.key();
        const bool isRenamed = oldPlaces.contains(id);
        if (!isChanged(id) || (isRenamed && !otherPlaces.contains(id)))
            continue;
        const bool staysBehind = isRenamed && others.value(place->application).contains(place->name);
        add(others, staysBehind ? otherPlaces[id] : place.value(), id);
    }
    return others;
}

bool writeFile(const QString &file, const CategoryGroups &groups)
{
    const QByteArray contents = categoryFileContents(groups);
    if (contents.size() <= Categories::MaximumFileSize)
        return replaceFile(file, contents);
    qWarning("%s would become too long", qPrintable(file));
    return false;
}

bool isWhole(char16_t first, char16_t second)
{
    return QChar::isHighSurrogate(first) && QChar::isLowSurrogate(second);
}

bool isText(char16_t unit)
{
    const bool isBreak = unit == u'\t' || unit == u'\n' || unit == u'\r';
    return (unit >= u' ' || isBreak) && unit != 0xFFFE && unit != 0xFFFF && !QChar::isSurrogate(unit);
}

} // namespace

CategoryGroup *CategoriesPrivate::groupOf(const QString &application, const QString &name)
{
    for (const QString &key : {application, Global}) {
        const auto group = groups.find(key);
        if (group != groups.end() && group->contains(name))
            return &group.value();
    }
    return nullptr;
}

Categories::Categories() : d(new CategoriesPrivate) {}
Categories::Categories(const Categories &other) = default;
Categories &Categories::operator=(const Categories &other) = default;
Categories::~Categories() = default;

bool Categories::operator==(const Categories &other) const
{
    return d->groups == other.d->groups;
}

bool Categories::isValidName(const QString &name)
{
    const std::u16string_view text(QStringView(name).utf16(), size_t(name.size()));
    for (size_t i = 0; i < text.size(); ++i) {
        if (i + 1 < text.size() && isWhole(text[i], text[i + 1]))
            ++i;
        else if (!isText(text[i]))
            return false;
    }
    return !text.empty();
}

bool Categories::load(const QString &file)
{
    const std::optional<CategoryGroups> groups = readCategoryFile(file);
    if (!groups)
        return false;
    d->groups = d->saved = *groups;
    d->file = file;
    return true;
}

bool Categories::save(const QString &file)
{
    const bool isKnown = d->file == file;
    if (isKnown && d->groups == d->saved && QFileInfo::exists(file))
        return true;
    const FolderLock lock(QFileInfo(file).path());
    const std::optional<CategoryGroups> present = readCategoryFile(file);
    if (!present) {
        qWarning("could not read %s, so it isn't replaced", qPrintable(file));
        return false;
    }
    const bool isThere = QFileInfo::exists(file);
    const CategoryGroups wanted =
        isThere ? merged(d->groups, isKnown ? d->saved : CategoryGroups(), *present) : d->groups;
    if ((!isThere || wanted != *present) && !writeFile(file, wanted))
        return false;
    d->groups = d->saved = wanted;
    d->file = file;
    return true;
}

int Categories::addCategory(const QString &application, const QString &name)
{
    if (!isValidName(application) || !isValidName(name))
        return 0;
    const int present = id(application, name);
    return present ? present : add(d->groups, {application, name}, numberOf({application, name}));
}

bool Categories::addCategory(const QString &application, const QString &name, int id)
{
    if (!isValidName(application) || !isValidName(name) || id < 1)
        return false;
    if (const int present = this->id(application, name))
        return present == id;
    if (hasId(d->groups, id))
        return false;
    return add(d->groups, {application, name}, id) == id;
}

int Categories::addGlobalCategory(const QString &name)
{
    return isValidName(name) ? add(d->groups, {Global, name}, numberOf({Global, name})) : 0;
}

bool Categories::renameCategory(const QString &application, const QString &oldName, const QString &newName)
{
    CategoryGroup *group = d->groupOf(application, oldName);
    if (!group || !isValidName(newName) || group->contains(newName))
        return false;
    group->insert(newName, group->take(oldName));
    return true;
}

bool Categories::removeCategory(const QString &application, const QString &name)
{
    if (!exists(application, name))
        return false;
    remove(d->groups, {d->idOf(application, name) ? application : Global, name});
    return true;
}

int Categories::id(const QString &application, const QString &name) const
{
    const int own = d->idOf(application, name);
    return own ? own : d->idOf(Global, name);
}

QList<int> Categories::ids(const QString &application, const QStringList &names) const
{
    QList<int> known;
    for (const QString &name : names) {
        if (const int id = this->id(application, name))
            known.append(id);
    }
    return known;
}

QString Categories::label(const QString &application, int id) const
{
    const QString own = d->groups.value(application).key(id);
    return own.isNull() ? d->groups.value(Global).key(id) : own;
}

QStringList Categories::labels(const QString &application) const
{
    QStringList names = d->groups.value(application).keys() + d->groups.value(Global).keys();
    names.sort();
    names.removeDuplicates();
    return names;
}

bool Categories::exists(const QString &application, const QString &name) const
{
    return id(application, name) != 0;
}

bool Categories::isGlobal(const QString &name) const
{
    return d->idOf(Global, name) != 0;
}
