#include "categories.h"
#include "categoryfile_p.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace {

constexpr auto FileElement = "categories";
constexpr auto GlobalElement = "global";
constexpr auto ApplicationElement = "application";
constexpr auto CategoryElement = "category";
constexpr auto NameAttribute = "name";
constexpr auto IdAttribute = "id";
constexpr auto VersionAttribute = "version";
constexpr auto FormatVersion = "1";

/** Reads the contents of a file; whatever isn't of its form is an error, so that nothing is lost when the
 * file is written again. */
class Reader
{
public:
    explicit Reader(const QByteArray &contents) : m_xml(contents) {}

    [[nodiscard]] std::optional<CategoryGroups> read()
    {
        if (!next() || !isElement(FileElement, 1) ||
            attribute(VersionAttribute) != QLatin1String(FormatVersion))
            return std::nullopt;
        while (next())
            readGroup();
        next(); // what stands behind the end
        return m_xml.hasError() ? std::nullopt : std::optional(m_groups);
    }

private:
    /** Goes to the next element inside the present one; false at the end of that and after an error. */
    bool next()
    {
        while (!m_xml.atEnd()) {
            switch (m_xml.readNext()) {
            case QXmlStreamReader::StartElement:
                return true;
            case QXmlStreamReader::EndElement:
                return false;
            case QXmlStreamReader::DTD:
                damaged();
                break;
            case QXmlStreamReader::Characters:
                if (!m_xml.isWhitespace())
                    damaged();
                break;
            default:
                break;
            }
        }
        return false;
    }

    void readGroup()
    {
        QString application;
        if (isElement(ApplicationElement, 1)) {
            application = attribute(NameAttribute);
            if (!Categories::isValidName(application))
                damaged();
        } else if (!isElement(GlobalElement, 0)) {
            damaged();
        }
        while (next())
            readCategory(m_groups[application]);
    }

    void readCategory(CategoryGroup &group)
    {
        const QString name = attribute(NameAttribute);
        const int id = attribute(IdAttribute).toInt();
        const bool isNew = !group.contains(name) && !m_ids.contains(id);
        if (!isElement(CategoryElement, 2) || id < 1 || !Categories::isValidName(name) || !isNew)
            damaged();
        group.insert(name, id);
        m_ids.insert(id);
        if (next())
            damaged();
    }

    /** True for an element of this name with this number of attributes. */
    [[nodiscard]] bool isElement(const char *name, qsizetype attributes) const
    {
        return m_xml.name() == QLatin1String(name) && m_xml.attributes().size() == attributes;
    }

    [[nodiscard]] QString attribute(const char *name) const
    {
        return m_xml.attributes().value(QLatin1String(name)).toString();
    }

    void damaged() { m_xml.raiseError(); }

    QXmlStreamReader m_xml;
    CategoryGroups m_groups;
    QSet<int> m_ids;
};

void writeCategories(QXmlStreamWriter &xml, const CategoryGroup &group)
{
    for (auto category = group.cbegin(); category != group.cend(); ++category) {
        xml.writeEmptyElement(QLatin1String(CategoryElement));
        xml.writeAttribute(QLatin1String(IdAttribute), QString::number(category.value()));
        xml.writeAttribute(QLatin1String(NameAttribute), category.key());
    }
}

} // namespace

std::optional<CategoryGroups> readCategoryFile(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return CategoryGroups();
    QFile file(path);
    // Anything but a plain file may block or never end.
    if (!info.isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray contents = file.read(qMin(info.size(), Categories::MaximumFileSize) + 1);
    if (contents.size() > Categories::MaximumFileSize)
        return std::nullopt;
    return Reader(contents).read();
}

QByteArray categoryFileContents(const CategoryGroups &groups)
{
    QByteArray contents;
    QXmlStreamWriter xml(&contents);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QLatin1String(FileElement));
    xml.writeAttribute(QLatin1String(VersionAttribute), QLatin1String(FormatVersion));
    for (auto group = groups.cbegin(); group != groups.cend(); ++group) {
        xml.writeStartElement(QLatin1String(group.key().isEmpty() ? GlobalElement : ApplicationElement));
        if (!group.key().isEmpty())
            xml.writeAttribute(QLatin1String(NameAttribute), group.key());
        writeCategories(xml, group.value());
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return contents;
}
