#include "boxkind.h"

#include "addressfields.h"

#include <QCoreApplication>

namespace {

KyPDataBaseItemInfo memoFields()
{
    const auto label = [](const char *text) { return QCoreApplication::translate("MemoForm", text); };
    KyPDataBaseItemInfo fields;
    fields.addItemInfo(MemoField::Title, "CLAS", KyPDataBaseItemInfo::Text,
                       label(QT_TRANSLATE_NOOP("MemoForm", "Title")), true);
    fields.addItemInfo(MemoField::Contents, "MEM1", KyPDataBaseItemInfo::Text,
                       label(QT_TRANSLATE_NOOP("MemoForm", "Contents")), true);
    fields.addItemInfo(MemoField::ChangeTime, "dATE", KyPDataBaseItemInfo::Time,
                       label(QT_TRANSLATE_NOOP("MemoForm", "Changed")), true);
    return fields;
}

} // namespace

BoxKind BoxKind::contacts()
{
    return {KyPDataBase::createAddressbookFile, KyPDataBase::addressbookFileName(false),
            KyPDataBase::addressbookMasterIdx(false), KyPDataBase::addressbookItems(), AddressField::Last};
}

BoxKind BoxKind::tasks()
{
    return {KyPDataBase::createTodolistFile, KyPDataBase::todolistFileName(false),
            KyPDataBase::todolistMasterIdx(false), KyPDataBase::todolistItems(), TaskField::Last};
}

BoxKind BoxKind::memos()
{
    return {KyPDataBase::createMemoFile, KyPDataBase::memoFileName(false), KyPDataBase::memoMasterIdx(false),
            memoFields(), MemoField::Last};
}
