#include "vcardreader.h"
#include "cardparser.h"
#include "cardsource.h"
#include "contactbuilder.h"
#include <QBuffer>
#include <QCoreApplication>

namespace {

QString text(const char *source)
{
    return QCoreApplication::translate("VCardReader", source);
}

std::unique_ptr<QIODevice> bufferOver(const QByteArray &bytes)
{
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(bytes);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

} // namespace

VCardReader::VCardReader(QIODevice *device) : m_cards(std::make_unique<VCard::CardSource>(device)) {}

VCardReader::VCardReader(const QByteArray &bytes)
    : m_ownDevice(bufferOver(bytes)), m_cards(std::make_unique<VCard::CardSource>(m_ownDevice.get()))
{
}

VCardReader::~VCardReader() = default;

std::optional<ContactFields> VCardReader::next()
{
    while (const std::optional<VCard::RawCard> raw = m_cards->next()) {
        const VCard::Card card = VCard::parseCard(*raw);
        if (!card.fault.isEmpty()) {
            m_report.skip(card.faultLine, card.fault);
            continue;
        }
        const ContactFields contact = VCard::ContactBuilder(&m_report).build(card);
        if (contact.values.contains(AddressField::FullName)) {
            ++m_report.imported;
            return contact;
        }
        m_report.skip(card.line, text("the card has no name"));
    }
    finish();
    return std::nullopt;
}

void VCardReader::finish()
{
    if (std::exchange(m_isFinished, true))
        return;
    if (m_cards->strayLine() > 0)
        m_report.skip(m_cards->strayLine(), text("the line belongs to no card"));
}

int VCardReader::countCards(QIODevice *device)
{
    device->seek(0);
    VCard::LineSource lines(device);
    VCard::Line line;
    int count = 0;
    while (lines.next(&line))
        count += VCard::isBegin(line.bytes) ? 1 : 0;
    device->seek(0);
    return count;
}
