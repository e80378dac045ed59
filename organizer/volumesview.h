#ifndef VOLUMESVIEW_H
#define VOLUMESVIEW_H

#include <QWidget>

class QGridLayout;
class StorageInfo;

/** The volumes, a line each: picture, name, how full, and the free space. */
class VolumesView : public QWidget
{
    Q_OBJECT
public:
    explicit VolumesView(QWidget *parent = nullptr);

    /** Reads the free space again. */
    void refresh();
    /** A line of text a volume. */
    [[nodiscard]] QStringList summary() const;

private:
    void fill();

    StorageInfo *m_storage;
    QGridLayout *m_grid;
};

#endif
