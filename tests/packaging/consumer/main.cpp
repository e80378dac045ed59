#include <kypdatabase.h>
#include <kypdatamanagerindexinfo.h>
#include <QDebug>
#include <qpeapplication.h>

namespace {

constexpr int FullName = 1;
constexpr int Reading = 10;

bool addContact(KyPDataBase &contacts, const char *name)
{
    unsigned long card = 0;
    return contacts.editNewCard() && contacts.writeField(FullName, QString::fromUtf8(name)) &&
           contacts.writeField(Reading, QString::fromUtf8(name)) && contacts.finishEditCard(&card);
}

bool makeContacts()
{
    KyPDataBase::createAddressbookFile(KyPDataManagerIndexInfo());
    KyPDataBase contacts(KyPDataBase::addressbookFileName(false), KyPDataBase::addressbookItems(), nullptr,
                         false);
    return addContact(contacts, "かき") && addContact(contacts, "あい");
}

} // namespace

int main(int argc, char **argv)
{
    const QPEApplication application(argc, argv, "consumer");
    if (!makeContacts())
        return 1;
#include "snippet.inc"
    return 0;
}
