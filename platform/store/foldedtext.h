#ifndef PDTM_FOLDEDTEXT_H
#define PDTM_FOLDEDTEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace pdtm {

/** A text to be compared without regard to the case of ASCII letters. Every other byte stands for itself. */
class FoldedText
{
public:
    FoldedText() = default;
    explicit FoldedText(std::string_view text);

    [[nodiscard]] bool equals(std::string_view text) const;
    /** Where it is found first, std::string_view::npos when nowhere. The empty text is at 0. */
    [[nodiscard]] size_t findIn(std::string_view text) const;
    [[nodiscard]] bool isIn(std::string_view text) const { return findIn(text) != std::string_view::npos; }
    [[nodiscard]] size_t size() const { return m_folded.size(); }

private:
    /** One byte of the text, compared with many at a time. */
    struct Probe
    {
        size_t offset = 0;
        uint8_t byte = 0;
        uint8_t caseBit = 0; ///< 0x20 for a letter: either case becomes the lower one with it
        /** 0 when the byte is there. */
        [[nodiscard]] uint8_t differenceAt(const uint8_t *start) const
        {
            return static_cast<uint8_t>((start[offset] | caseBit) ^ byte);
        }
    };
    [[nodiscard]] Probe probeAt(size_t offset) const;
    [[nodiscard]] bool startsAt(const uint8_t *start) const;
    template <size_t Size> [[nodiscard]] size_t findInBlock(const uint8_t *block) const;
    template <size_t Size> [[nodiscard]] size_t findInBlocks(const uint8_t *first, size_t starts) const;

    std::string m_folded;
    Probe m_first;
    Probe m_last;
};

} // namespace pdtm

#endif
