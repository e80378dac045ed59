#include "categorytable.h"

#include "messages.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "qpeapplication.h"

namespace {

constexpr int SystemBit = 0x80; // of the item `TYPE`

} // namespace

CategoryTable::CategoryTable(QObject *parent)
    : QObject(parent), m_channel(new QCopChannel("QPE/System", this))
{
    KyCategories::createFile(nullptr);
    m_table = std::make_unique<KyCategories>();
    read();
    m_reload.setSingleShot(true);
    connect(&m_reload, &QTimer::timeout, this, &CategoryTable::reload);
    connect(m_channel, &QCopChannel::received, this, [this](const QByteArray &message) {
        if (message == "categoryChange(QString)" || message == "categoryRemoved(int)")
            m_reload.start(0); // behind the boxes, which obey the same message
    });
}

/* All of it with one open, which is in nobody's way. */
void CategoryTable::read()
{
    m_entries.clear();
    KyPDataManager table(KyCategories::boxFileName().toUtf8().constData(), nullptr, true);
    for (bool more = table.first(); more; more = table.next())
        m_entries.append({table.readUcharItem("SCTG"), table.readItem("TITL"),
                          (table.readUcharItem("TYPE") & SystemBit) != 0});
}

void CategoryTable::reload()
{
    read();
    emit changed();
}

void CategoryTable::announce()
{
    QCopEnvelope envelope("QPE/System", "categoryChange(QString)");
    envelope << QPEApplication::applicationNameOf(qApp);
}

QString CategoryTable::name(int id) const
{
    if (id == UnfiledCategoryId)
        return KyCategories::tr("Unfiled");
    for (const CategoryEntry &entry : m_entries) {
        if (entry.id == id)
            return entry.name;
    }
    return {};
}

int CategoryTable::id(const QString &name) const
{
    for (const CategoryEntry &entry : m_entries) {
        if (entry.name == name)
            return entry.id;
    }
    return 0;
}

QString CategoryTable::names(const QList<int> &ids) const
{
    QStringList names;
    for (int id : known(ids))
        names.append(name(id));
    return names.join(QLatin1String(", "));
}

QList<int> CategoryTable::known(const QList<int> &ids) const
{
    QList<int> result;
    for (int id : ids) {
        if (!name(id).isNull())
            result.append(id);
    }
    return result;
}

/* The table itself is asked: another application may have changed it a moment ago. */
QString CategoryTable::objectionTo(const QString &name) const
{
    if (name.isEmpty())
        return tr("A category needs a name.");
    if (m_table->exists(name))
        return tr("There is a category \"%1\" already.").arg(Messages::shortened(name));
    return {};
}

QString CategoryTable::add(const QString &name)
{
    const QString objection = objectionTo(name);
    if (!objection.isEmpty())
        return objection;
    const bool added = m_table->addCategory(name) != 0;
    reload();
    if (!added)
        return m_entries.size() >= MaximumCategories
                   ? tr("There is no room for more than %1 categories.").arg(MaximumCategories)
                   : tr("The category could not be added. The storage may be full.");
    announce();
    return {};
}

QString CategoryTable::rename(const QString &oldName, const QString &newName)
{
    const QString objection = objectionTo(newName);
    if (!objection.isEmpty())
        return objection;
    if (m_table->isSystemCategory(oldName))
        return tr("\"%1\" belongs to the system and keeps its name.").arg(Messages::shortened(oldName));
    const bool renamed = m_table->renameCategory(oldName, newName);
    reload();
    if (!renamed)
        return tr("The category \"%1\" could not be renamed.").arg(Messages::shortened(oldName));
    announce();
    return {};
}

/* The table tells others of a removal. */
QString CategoryTable::remove(const QString &name)
{
    if (m_table->isSystemCategory(name))
        return tr("\"%1\" belongs to the system and stays.").arg(Messages::shortened(name));
    const bool removed = m_table->removeCategory(name);
    reload();
    return removed ? QString()
                   : tr("The category \"%1\" could not be removed.").arg(Messages::shortened(name));
}
