#ifndef KYCATEGORYEDIT_P_H
#define KYCATEGORYEDIT_P_H

#include "kycategories.h"
#include <memory>
#include <QList>
#include <QString>

class QTreeWidgetItem;

/** What a KyCategoryEdit knows once it has categories; its dialog for a name looks there for names that are
 * taken. */
class KyCategoryEditPrivate
{
public:
    std::unique_ptr<KyCategories> categories = std::make_unique<KyCategories>();
    QTreeWidgetItem *selected = nullptr;
    QString appName;
    QList<int> unlisted; ///< categories of the record without a row, since the table was out of reach
};

/** Sends `categoryChange(QString)` with an application's name on "QPE/System". */
void tellCategoryChange(const QString &application);

#endif
