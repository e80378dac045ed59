// Contacts from a file of any bytes: each has a name, lines stay inside the file, and the report counts them.
#include "fuzzsupport.h"
#include "vcardreader.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    VCardReader reader(QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    int count = 0;
    while (const std::optional<ContactFields> contact = reader.next()) {
        ++count;
        require(contact->line > 0 && static_cast<size_t>(contact->line) <= size);
        require(!contact->values.value(AddressField::FullName).isEmpty());
        require(!contact->values.value(AddressField::FullPronunciation).isEmpty());
        require(contact->values.firstKey() >= AddressField::First);
        require(contact->values.lastKey() <= AddressField::Last);
    }
    require(count == reader.report().imported);
    require(!importReport(reader.report()).isEmpty());
    return 0;
}
