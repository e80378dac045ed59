#ifndef KY_TEST_CODEFIXTURE_H
#define KY_TEST_CODEFIXTURE_H

#include "imagebuilder.h"

#include <QStringList>

#include <algorithm>
#include <cstring>
#include <vector>

/**
 * @file codefixture.h
 * What a search by code answers, in buffers that show when something is written outside of them.
 */

namespace codefixture {

using imagebuilder::Bytes;

constexpr char Guard = 'G';
constexpr size_t GuardLength = 16;

/** The buffer that a search fills, and a guard behind it. */
class ResultBuffer
{
public:
    explicit ResultBuffer(size_t length) : m_bytes(length + GuardLength, Guard) {}

    char *data() { return m_bytes.data(); }

    bool isGuarded() const
    {
        return std::all_of(m_bytes.end() - GuardLength, m_bytes.end(),
                           [](char byte) { return byte == Guard; });
    }

    /** The first results, as bytes. */
    std::vector<Bytes> results(int count) const
    {
        std::vector<Bytes> results;
        const char *at = m_bytes.data();
        for (int i = 0; i < count; ++i, at += std::strlen(at) + 1)
            results.emplace_back(at);
        return results;
    }

private:
    std::vector<char> m_bytes;
};

/** What a search gave. */
struct Answer
{
    int count = 0;
    std::vector<Bytes> results{};
    QStringList addresses{};
    Bytes near{};
    bool isGuarded = false;
    bool isEmpty = false; ///< the buffer begins with a NUL
};

inline QString textOf(const Bytes &bytes)
{
    return QString::fromStdU16String(ZipDict::fromJis(bytes));
}

inline Answer answerOf(int count, ResultBuffer &buffer)
{
    Answer answer;
    answer.count = count;
    answer.results = buffer.results(count);
    for (const Bytes &result : answer.results)
        answer.addresses.append(textOf(result));
    answer.isGuarded = buffer.isGuarded();
    answer.isEmpty = *buffer.data() == '\0';
    return answer;
}

constexpr uint32_t DialogMaximum = 20;

inline size_t bufferLength(uint32_t max)
{
    return size_t{max} * (YDIC_ADDRESS_LENGTH + 1);
}

inline Answer search(imagebuilder::OpenImages &files, const char *code, uint32_t max = DialogMaximum)
{
    ResultBuffer buffer(bufferLength(max));
    return answerOf(Zip2AdrSearch(code, max, buffer.data(), files.info()), buffer);
}

inline Answer search(const Bytes &dictionary, const char *code, uint32_t max = DialogMaximum)
{
    imagebuilder::OpenImages files(dictionary);
    return search(files, code, max);
}

/** Zip2AdrSearchNP(). */
inline Answer searchNear(imagebuilder::OpenImages &files, const char *code, uint8_t direction,
                         uint32_t max = DialogMaximum)
{
    ResultBuffer buffer(bufferLength(max));
    char near[8 + GuardLength];
    std::fill(std::begin(near), std::end(near), Guard);
    const int count = Zip2AdrSearchNP(code, max, direction, near, buffer.data(), files.info());
    Answer answer = answerOf(count, buffer);
    answer.near = near;
    answer.isGuarded = answer.isGuarded && near[8] == Guard;
    return answer;
}

} // namespace codefixture

#endif
