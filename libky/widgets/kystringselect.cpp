#include "kystringselect.h"
#include "config.h"

namespace {

constexpr char SettingsFile[] = "haldenlist";
constexpr char StringsKey[] = "strings";
constexpr char WrittenKey[] = "defset"; // tells that the group has been written
constexpr QLatin1Char Separator(';');
constexpr int Capacity = 20;
constexpr int NarrowestWidth = 8; // characters

} // namespace

class KyStringSelectPrivate
{
public:
    QString group;
    QStringList strings; ///< newest first
    int max = Capacity;
};

KyStringSelect::KyStringSelect(QWidget *parent, const char *name)
    : QComboBox(parent), d(new KyStringSelectPrivate)
{
    setObjectName(QLatin1String(name));
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(NarrowestWidth);
}

KyStringSelect::KyStringSelect(const QString &group, const QStringList &defaults, QWidget *parent,
                               const char *name)
    : KyStringSelect(parent, name)
{
    init(group, defaults);
}

KyStringSelect::~KyStringSelect() = default;

void KyStringSelect::setMax(int max)
{
    d->max = max;
}

void KyStringSelect::setGroup(const QString &group, const QStringList &defaults)
{
    init(group, defaults);
}

void KyStringSelect::init(const QString &group, const QStringList &defaults)
{
    d->group = group;
    Config config(SettingsFile, Config::User);
    config.setGroup(group);
    const bool isWritten = config.readNumEntry(WrittenKey, -1) >= 0;
    d->strings = isWritten ? config.readListEntry(StringsKey, Separator) : defaults;
    reload();
}

void KyStringSelect::reload()
{
    clear();
    addItem(QString()); // before the others: the first row of all becomes the current one
    addItems(d->strings);
}

void KyStringSelect::write()
{
    Config config(SettingsFile, Config::User);
    config.setGroup(d->group);
    config.writeEntry(StringsKey, d->strings, Separator);
    config.writeEntry(WrittenKey, 1);
}

bool KyStringSelect::addStringAtTop(const QString &text, bool keepDuplicates)
{
    const QString string = text.simplified();
    if (string.isEmpty())
        return false;
    if (!keepDuplicates)
        d->strings.removeAll(string);
    makeRoom();
    d->strings.prepend(string);
    write();
    return true;
}

/** Takes the oldest string of a full list away, wherever it stands. */
void KyStringSelect::makeRoom()
{
    if (d->strings.isEmpty() || d->strings.size() < d->max)
        return;
    const QString oldest = d->strings.last();
    d->strings.removeAll(oldest);
}

QStringList KyStringSelect::testStrings()
{
    return {"aaa", "bbb", "ccc", "ddd", "eee", "fff", "ggg", "hhh", "iii", "jjj"};
}
