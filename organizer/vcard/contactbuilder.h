#ifndef CONTACTBUILDER_H
#define CONTACTBUILDER_H

#include "cardparser.h"
#include "contactfields.h"
#include "vcardreport.h"

namespace VCard {

/**
 * Turns the properties of one card into address book fields.
 *
 * A field takes the first value it gets, the preferred one since the card comes in that order. A further
 * value, or one without a field, becomes a line "NAME TYPES: value" of the notes.
 */
class ContactBuilder
{
public:
    /** @p report gets the names of what is unknown or left out; it outlives the builder. */
    explicit ContactBuilder(VCardReport *report) : m_report(report) {}

    [[nodiscard]] ContactFields build(const Card &card);

private:
    using Reader = void (ContactBuilder::*)(const Property &);
    struct Rule
    {
        const char *name;
        Reader reader;
    };
    struct TextRule
    {
        const char *name;
        int field;
    };
    static const Rule Rules[];
    static const TextRule TextRules[];
    static const char *const NoteRules[];
    static const char *const LeftOutRules[];
    static const char *const SilentRules[];

    void collectLabels(const Card &card);
    void add(Property property);
    bool addByRule(const Property &property);
    bool addText(const Property &property);

    void readFormattedName(const Property &property);
    void readName(const Property &property);
    void readSound(const Property &property);
    void readSortString(const Property &property);
    void readLastPronunciation(const Property &property);
    void readFirstPronunciation(const Property &property);
    void readCompanyPronunciation(const Property &property);
    void readOrganization(const Property &property);
    void readPhone(const Property &property);
    void readAddress(const Property &property);
    void readEmail(const Property &property);
    void readUrl(const Property &property);
    void readBirthday(const Property &property);
    void readAnniversary(const Property &property);
    void readLabelledDate(const Property &property);
    void readGender(const Property &property);
    void readLegacyGenderCode(const Property &property);
    void readRelated(const Property &property);
    void readChildren(const Property &property);
    void readNote(const Property &property);
    void readCategories(const Property &property);
    void readAgent(const Property &property);

    void readDate(int field, const Property &property);
    void takeReading(const QStringList &lastAndFirst);
    void addTelephone(int field, const Property &property);
    void setField(int field, const QString &value, const Property &property);
    void setText(int field, const QString &value);
    void keepInNotes(const QString &label, const QString &value);
    void keepInNotes(const Property &property, const QString &value);

    void fillLists();
    void fillAgents(const QStringList &agents);
    void fillNames();
    void fillPronunciation();
    void fillNotes();
    [[nodiscard]] QString composedName() const;
    [[nodiscard]] QString filledName() const;
    [[nodiscard]] QString value(int field) const { return m_contact.values.value(field); }

    VCardReport *m_report;
    ContactFields m_contact;
    QMap<QString, QString> m_labels; ///< By group.
    QStringList m_emails;
    QStringList m_children;
    QStringList m_notes;
    QStringList m_extraLines;
    QStringList m_soundReading;
    QStringList m_sortReading;
};

} // namespace VCard

#endif
