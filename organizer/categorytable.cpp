#include "categorytable.h"

#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "qpeapplication.h"

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
        m_entries.append({table.readUcharItem("SCTG"), table.readItem("TITL")});
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

int CategoryTable::add(const QString &name)
{
    const int added = m_table->addCategory(name);
    reload();
    if (added != 0)
        announce();
    return added;
}

int CategoryTable::idMade(const QString &name)
{
    const int present = id(name);
    return present != 0 ? present : add(name);
}
