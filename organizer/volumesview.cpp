#include "volumesview.h"

#include "kymisc.h"
#include "resource.h"
#include "storageinfo.h"

#include <limits>
#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>

namespace {

/* Columns of the grid. */
enum Column { Picture, Name, Fill, Free };

constexpr int FullScale = 1000;  // of the bar
constexpr int NarrowestBar = 40; // pixels; the style wants more than a small screen has

qint64 totalOf(const FileSystem &volume)
{
    return qint64(volume.totalBlocks()) * volume.blockSize();
}

/* Of the internal volume what the device itself says, as the applications do. */
qint64 freeOf(const FileSystem &volume, bool internal)
{
    const int kilobytes = internal ? KyMisc::availableInternalStorage() : std::numeric_limits<int>::max();
    const bool known = kilobytes != std::numeric_limits<int>::max();
    return known ? qint64(kilobytes) * 1024 : qint64(volume.availBlocks()) * volume.blockSize();
}

QString iconOf(const FileSystem &volume, bool internal)
{
    if (internal)
        return QStringLiteral("MainDeviceS");
    if (volume.name() == QLatin1String("SD"))
        return QStringLiteral("SDDeviceS");
    return volume.name() == QLatin1String("CF") ? QStringLiteral("CFDeviceS") : QStringLiteral("kyfolder");
}

bool isShown(const FileSystem &volume)
{
    return !volume.path().startsWith(QLatin1String("/dev/shm"));
}

QString freeText(const FileSystem &volume, bool internal)
{
    const QLocale locale;
    const QString text = VolumesView::tr("%1 free of %2")
                             .arg(locale.formattedDataSize(freeOf(volume, internal)),
                                  locale.formattedDataSize(totalOf(volume)));
    return volume.isWritable() ? text : VolumesView::tr("%1, read-only").arg(text);
}

int usedPart(const FileSystem &volume, bool internal)
{
    const double total = double(totalOf(volume));
    const double used = total - double(freeOf(volume, internal));
    return total > 0 ? int(FullScale * qBound(0.0, used / total, 1.0)) : 0;
}

template <typename Widget> Widget *widgetAt(const QGridLayout &grid, int row, int column)
{
    return qobject_cast<Widget *>(grid.itemAtPosition(row, column)->widget());
}

} // namespace

VolumesView::VolumesView(QWidget *parent)
    : QWidget(parent), m_storage(new StorageInfo(this)), m_grid(new QGridLayout(this))
{
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setColumnStretch(Fill, 1);
    connect(m_storage, &StorageInfo::disksChanged, this, &VolumesView::fill);
    fill();
}

void VolumesView::fill()
{
    while (QLayoutItem *item = m_grid->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    int row = 0;
    for (const FileSystem *volume : m_storage->fileSystems()) {
        if (!isShown(*volume))
            continue;
        auto *picture = new QLabel;
        picture->setPixmap(Resource::loadPixmap(iconOf(*volume, row == 0)));
        auto *bar = new QProgressBar;
        bar->setRange(0, FullScale);
        bar->setTextVisible(false);
        bar->setMinimumWidth(NarrowestBar);
        bar->setMaximumHeight(fontMetrics().height());
        m_grid->addWidget(picture, row, Picture);
        m_grid->addWidget(new QLabel(volume->uiName()), row, Name);
        m_grid->addWidget(bar, row, Fill);
        auto *free = new QLabel;
        free->setWordWrap(true);
        m_grid->addWidget(free, row, Free);
        ++row;
    }
    refresh();
}

void VolumesView::refresh()
{
    int row = 0;
    for (const FileSystem *volume : m_storage->fileSystems()) {
        if (!isShown(*volume))
            continue;
        widgetAt<QProgressBar>(*m_grid, row, Fill)->setValue(usedPart(*volume, row == 0));
        widgetAt<QLabel>(*m_grid, row, Free)->setText(freeText(*volume, row == 0));
        ++row;
    }
}

QStringList VolumesView::summary() const
{
    QStringList lines;
    for (int row = 0; row < m_grid->count() / (Free + 1); ++row) {
        const QString name = widgetAt<QLabel>(*m_grid, row, Name)->text();
        lines.append(name + QStringLiteral(": ") + widgetAt<QLabel>(*m_grid, row, Free)->text());
    }
    return lines;
}
