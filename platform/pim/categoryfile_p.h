#ifndef KY_CATEGORYFILE_H
#define KY_CATEGORYFILE_H

#include <optional>
#include <QByteArray>
#include <QMap>
#include <QString>

/** Ids by name. */
using CategoryGroup = QMap<QString, int>;
/** Groups by application; the empty name is that of the global group. */
using CategoryGroups = QMap<QString, CategoryGroup>;

/** The categories in a file: none for a missing one, nothing for one that is damaged or can't be read. */
[[nodiscard]] std::optional<CategoryGroups> readCategoryFile(const QString &file);

/** The contents of a file with these categories. */
[[nodiscard]] QByteArray categoryFileContents(const CategoryGroups &groups);

#endif
