#ifndef LINKFINDER_P_H
#define LINKFINDER_P_H

#include <QString>

/**
 * Finds addresses in rich text and makes links of them. The text is hostile: it comes from mail and the web.
 * What is inserted stays inside its attribute, and the time taken grows with the length of the text.
 *
 * Words such as "http://" and "<br>" count in upper and lower case.
 */
namespace LinkFinder {

/** Links made of one web address that has further ones in it, such as "http://a/http://b". Each repeats all
 * that follows, so without a limit a text of 1 MB would become one of 100 GB. */
constexpr int MaxNestedLinks = 16;

/** Every e-mail address as a link with "mailto:". A "<" in front of an address becomes a blank. */
[[nodiscard]] QString withEmailLinks(const QString &text);

/** Every web address as a link, from the first "http://" on; from the first "https://" when there is none. */
[[nodiscard]] QString withUrlLinks(const QString &text);

/** What has become of a text by the operations above, without the ">" of each <name@host> of that text. The
 * "<" is a blank by then. */
[[nodiscard]] QString withoutClosingBrackets(const QString &linked, const QString &text);

/** The address that an href of withUrlLinks() stands for: the characters '"', '<' and '>' again. */
[[nodiscard]] QString decodedLink(const QString &href);

} // namespace LinkFinder

#endif
