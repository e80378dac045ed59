#include "indexfile.h"

#include "checksum.h"
#include "environment.h"
#include "filesystem.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace pdtm {

static_assert(std::endian::native == std::endian::little, "numbers go to the file as they stand in memory");

namespace {

constexpr char Magic[8] = {'P', 'D', 'T', 'M', 'I', 'D', 'X', '1'};
constexpr size_t HeadSize = 24; // magic, u32 length, u32 zero, u64 checksum
constexpr size_t TailSize = 24; // u64 checksum, u32 length, u32 zero, magic
constexpr size_t MaximumDefinition = size_t{64} * 1024;
constexpr size_t FirstRead = 4096;
constexpr size_t BytesPerCard = sizeof(CardId) + 1 + sizeof(uint32_t); // id, attribute, end of its key
constexpr uint32_t MaximumKeyBytes = 256U * 1024 * 1024;
constexpr uint8_t DefinitionVersion = 1;

/** The change counter as it stands in the file. It has a checksum of its own, since it is written alone. */
struct StoredCounter
{
    uint64_t counter;
    uint64_t checksum;

    static StoredCounter of(uint64_t counter)
    {
        return {counter, checksumOf({reinterpret_cast<const uint8_t *>(&counter), sizeof counter})};
    }
    /** 0 when it is damaged, or was written in part. */
    [[nodiscard]] uint64_t value() const { return checksum == of(counter).checksum ? counter : 0; }
};

template <typename T> T numberAt(const uint8_t *bytes)
{
    T value;
    memcpy(&value, bytes, sizeof value);
    return value;
}

template <typename T> void append(std::string &out, T value)
{
    out.append(reinterpret_cast<const char *>(&value), sizeof value);
}

void appendText(std::string &out, const std::string &text)
{
    append(out, static_cast<uint16_t>(text.size()));
    out += text;
}

void appendOptional(std::string &out, const std::optional<std::string> &text)
{
    append(out, static_cast<uint8_t>(text ? 1 : 0));
    appendText(out, text.value_or(std::string()));
}

std::string encoded(const IndexDefinition &definition)
{
    std::string out;
    append(out, DefinitionVersion);
    append(out, definition.kind);
    append(out, static_cast<uint8_t>(definition.filled ? 1 : 0));
    append(out, definition.collator);
    appendText(out, definition.language);
    appendText(out, definition.boxName);
    appendOptional(out, definition.sortExpression);
    appendOptional(out, definition.searchExpression);
    appendOptional(out, definition.subset);
    appendText(out, definition.order);
    append(out, static_cast<uint16_t>(definition.condition.size()));
    for (const std::string &term : definition.condition) {
        appendText(out, term);
    }
    return out;
}

/** Takes values off the front of some bytes; once they run short everything that follows is 0 or empty. */
class Cursor
{
public:
    explicit Cursor(Bytes bytes) : m_rest(bytes) {}
    [[nodiscard]] bool isAtEnd() const { return m_ok && m_rest.empty(); }
    [[nodiscard]] bool isOk() const { return m_ok; }

    template <typename T> T number()
    {
        const Bytes bytes = take(sizeof(T));
        return bytes.empty() ? T() : numberAt<T>(bytes.data());
    }

    std::string text()
    {
        const Bytes bytes = take(number<uint16_t>());
        return {bytes.begin(), bytes.end()};
    }

    std::optional<std::string> optionalText()
    {
        const bool present = number<uint8_t>() != 0;
        std::string value = text();
        return present ? std::optional(std::move(value)) : std::nullopt;
    }

private:
    Bytes take(size_t size)
    {
        m_ok = m_ok && size <= m_rest.size();
        if (!m_ok) {
            return {};
        }
        const Bytes taken = m_rest.first(size);
        m_rest = m_rest.subspan(size);
        return taken;
    }

    Bytes m_rest;
    bool m_ok = true;
};

bool decode(Bytes bytes, IndexDefinition &definition)
{
    Cursor cursor(bytes);
    if (cursor.number<uint8_t>() != DefinitionVersion) {
        return false;
    }
    definition.kind = cursor.number<uint8_t>();
    definition.filled = cursor.number<uint8_t>() != 0;
    definition.collator = cursor.number<uint32_t>();
    definition.language = cursor.text();
    definition.boxName = cursor.text();
    definition.sortExpression = cursor.optionalText();
    definition.searchExpression = cursor.optionalText();
    definition.subset = cursor.optionalText();
    definition.order = cursor.text();
    const auto terms = cursor.number<uint16_t>();
    definition.condition.clear();
    for (int i = 0; i < terms && cursor.isOk(); ++i) {
        definition.condition.push_back(cursor.text());
    }
    return cursor.isAtEnd();
}

size_t orderOffset(size_t definitionSize)
{
    return (HeadSize + definitionSize + 7) / 8 * 8;
}

FileStamp stampFrom(const struct stat &status)
{
    return {.device = status.st_dev,
            .inode = status.st_ino,
            .size = status.st_size,
            .modified = status.st_mtim.tv_sec * 1000000000LL + status.st_mtim.tv_nsec};
}

PdtmStatus statusOfReadError(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return PdtmMissing;
    case ENOMEM:
    case EMFILE:
    case ENFILE:
        return PdtmTooShort;
    default:
        return PdtmIoError;
    }
}

} // namespace

PdtmStatus statusOfWriteError(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
        return PdtmReadOnly;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return PdtmOutOfSpace;
    case ENAMETOOLONG:
        return PdtmBadArgument;
    default:
        return statusOfReadError(error);
    }
}

bool isDatabaseInUse(const std::string &realPath)
{
    return access((realPath + "-wal").c_str(), F_OK) == 0 || access((realPath + "-shm").c_str(), F_OK) == 0;
}

bool isCompanionOfBox(std::string_view path)
{
    constexpr std::string_view Endings[] = {"-wal", "-shm", "-lock", "-journal", ".new"};
    return std::any_of(std::begin(Endings), std::end(Endings),
                       [path](std::string_view ending) { return path.ends_with(ending); });
}

std::optional<FileStamp> stampOf(const std::string &realPath)
{
    struct stat status = {};
    if (stat(realPath.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return stampFrom(status);
}

std::string IndexDefinition::box() const
{
    return boxName.substr(0, boxName.find('\0'));
}

struct IndexFileReader::OrderHeader
{
    StoredCounter counter;
    uint32_t count;
    uint32_t keyBytes;
    uint64_t orderChecksum;
    uint64_t keysChecksum;
};

IndexFileReader::~IndexFileReader()
{
    if (m_file >= 0) {
        close(m_file);
    }
}

PdtmStatus IndexFileReader::open(const std::string &realPath)
{
    if (isDatabaseInUse(realPath)) {
        return PdtmDamaged;
    }
    m_file = ::open(realPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (m_file < 0) {
        return statusOfReadError(errno);
    }
    struct stat status = {};
    if (fstat(m_file, &status) != 0 || !S_ISREG(status.st_mode)) {
        return PdtmDamaged;
    }
    m_stamp = stampFrom(status);
    return readHead() || readTail() ? PdtmOk : PdtmDamaged;
}

bool IndexFileReader::readAt(uint64_t offset, void *buffer, size_t size) const
{
    const auto fileSize = static_cast<uint64_t>(m_stamp.size);
    if (offset > fileSize || size > fileSize - offset) {
        return false;
    }
    auto *out = static_cast<uint8_t *>(buffer);
    while (size > 0) {
        const ssize_t got = pread(m_file, out, size, static_cast<off_t>(offset));
        if (got <= 0) {
            return false;
        }
        out += got;
        offset += static_cast<uint64_t>(got);
        size -= static_cast<size_t>(got);
    }
    return true;
}

bool IndexFileReader::takeDefinition(Bytes bytes, uint64_t checksum)
{
    if (checksum != checksumOf(bytes) || !decode(bytes, m_definition)) {
        return false;
    }
    m_definitionSize = bytes.size();
    m_orderOffset = orderOffset(bytes.size());
    return true;
}

bool IndexFileReader::readHead()
{
    std::vector<uint8_t> bytes(std::min<size_t>(FirstRead, static_cast<size_t>(m_stamp.size)));
    if (bytes.size() < HeadSize || !readAt(0, bytes.data(), bytes.size()) ||
        memcmp(bytes.data(), Magic, sizeof Magic) != 0) {
        return false;
    }
    const size_t length = numberAt<uint32_t>(&bytes[8]);
    if (length > MaximumDefinition) {
        return false;
    }
    if (HeadSize + length > bytes.size()) {
        bytes.resize(HeadSize + length);
        if (!readAt(0, bytes.data(), bytes.size())) {
            return false;
        }
    }
    return takeDefinition(Bytes(bytes).subspan(HeadSize, length), numberAt<uint64_t>(&bytes[16]));
}

bool IndexFileReader::readTail()
{
    const auto fileSize = static_cast<uint64_t>(m_stamp.size);
    uint8_t tail[TailSize];
    if (fileSize < TailSize || !readAt(fileSize - TailSize, tail, TailSize) ||
        memcmp(&tail[16], Magic, sizeof Magic) != 0) {
        return false;
    }
    const size_t length = numberAt<uint32_t>(&tail[8]);
    if (length > MaximumDefinition || length + TailSize > fileSize) {
        return false;
    }
    std::vector<uint8_t> bytes(length);
    return readAt(fileSize - TailSize - length, bytes.data(), length) &&
           takeDefinition(bytes, numberAt<uint64_t>(tail));
}

/** A file that isn't as long as its order says is damaged, even where the part that is asked for is whole. */
bool IndexFileReader::readHeader(OrderHeader &header) const
{
    if (!readAt(m_orderOffset, &header, sizeof header) || header.count > PdtmLastOrdinaryCard ||
        header.keyBytes > MaximumKeyBytes) {
        return false;
    }
    const uint64_t orderSize = sizeof header + uint64_t{BytesPerCard} * header.count + header.keyBytes;
    return m_orderOffset + orderSize + m_definitionSize + TailSize == static_cast<uint64_t>(m_stamp.size);
}

uint64_t IndexFileReader::counter() const
{
    OrderHeader header = {};
    return readHeader(header) ? header.counter.value() : 0;
}

bool IndexFileReader::readOrder(StoredOrder &order) const
{
    OrderHeader header = {};
    if (!readHeader(header)) {
        return false;
    }
    order.counter = header.counter.value();
    order.cards.resize(header.count);
    order.attributes.resize(header.count);
    const uint64_t cardsAt = m_orderOffset + sizeof header;
    const size_t cardBytes = header.count * sizeof(CardId);
    if (!readAt(cardsAt, order.cards.data(), cardBytes) ||
        !readAt(cardsAt + cardBytes, order.attributes.data(), header.count)) {
        return false;
    }
    Checksum checksum;
    checksum.add(&header.count, sizeof header.count + sizeof header.keyBytes);
    checksum.add(order.cards.data(), cardBytes);
    checksum.add(order.attributes.data(), header.count);
    return checksum.result() == header.orderChecksum;
}

bool IndexFileReader::readKeys(StoredOrder &order, StoredKeys &keys) const
{
    OrderHeader header = {};
    if (!readHeader(header) || !readOrder(order)) {
        return false;
    }
    keys.ends.resize(header.count);
    const size_t endBytes = header.count * sizeof(uint32_t);
    const uint64_t endsAt = m_orderOffset + sizeof header + header.count * (sizeof(CardId) + 1);
    keys.bytes.resize(header.keyBytes);
    if (!readAt(endsAt, keys.ends.data(), endBytes) ||
        !readAt(endsAt + endBytes, keys.bytes.data(), header.keyBytes)) {
        return false;
    }
    Checksum checksum;
    checksum.add(keys.ends.data(), endBytes);
    checksum.add(keys.bytes.data(), keys.bytes.size());
    return checksum.result() == header.keysChecksum && std::is_sorted(keys.ends.begin(), keys.ends.end()) &&
           (keys.ends.empty() ? keys.bytes.empty() : keys.ends.back() == keys.bytes.size());
}

namespace {

void appendBytes(std::string &out, const void *bytes, size_t size)
{
    out.append(static_cast<const char *>(bytes), size);
}

void appendOrder(std::string &out, const OrderImage &order)
{
    const auto count = static_cast<uint32_t>(order.cards.size());
    const size_t cardBytes = order.cards.size() * sizeof(CardId);
    std::string sizes;
    append(sizes, count);
    append(sizes, static_cast<uint32_t>(order.keys.size()));
    Checksum orderChecksum;
    orderChecksum.add(sizes.data(), sizes.size());
    orderChecksum.add(order.cards.data(), cardBytes);
    orderChecksum.add(order.attributes.data(), order.attributes.size());
    Checksum keysChecksum;
    keysChecksum.add(order.keyEnds.data(), order.keyEnds.size() * sizeof(uint32_t));
    keysChecksum.add(order.keys.data(), order.keys.size());
    append(out, StoredCounter::of(order.counter));
    out += sizes;
    append(out, orderChecksum.result());
    append(out, keysChecksum.result());
    appendBytes(out, order.cards.data(), cardBytes);
    out += order.attributes;
    appendBytes(out, order.keyEnds.data(), order.keyEnds.size() * sizeof(uint32_t));
    out += order.keys;
}

/** Keys beyond the limit are not stored: the order is marked unusable and made anew by the next process. */
std::string fileImage(const std::string &definition, const OrderImage &whole)
{
    const OrderImage none;
    const OrderImage &order = whole.keys.size() <= MaximumKeyBytes ? whole : none;
    const uint64_t checksum = checksumOf(bytesOf(definition));
    const auto length = static_cast<uint32_t>(definition.size());
    std::string out;
    out.reserve(2 * definition.size() + order.cards.size() * BytesPerCard + order.keys.size() + 128);
    appendBytes(out, Magic, sizeof Magic);
    append(out, length);
    append(out, uint32_t{0});
    append(out, checksum);
    out += definition;
    out.resize(orderOffset(definition.size()), '\0');
    appendOrder(out, order);
    out += definition;
    append(out, checksum);
    append(out, length);
    append(out, uint32_t{0});
    appendBytes(out, Magic, sizeof Magic);
    return out;
}

/** Result 0 or an errno. */
int writeNewFile(const std::string &path, const std::string &bytes, FileStamp &stamp)
{
    unlink(path.c_str());
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) {
        return errno;
    }
    struct stat status = {};
    const bool written = writeAll(file, bytes.data(), bytes.size()) && fstat(file, &status) == 0;
    const int writeError = written ? 0 : errno;
    const int closeError = close(file) == 0 ? 0 : errno;
    stamp = stampFrom(status);
    return writeError != 0 ? writeError : closeError;
}

} // namespace

PdtmStatus writeIndexFile(const std::string &realPath, const IndexDefinition &definition,
                          const OrderImage &order, FileStamp &stamp)
{
    const std::string bytes = encoded(definition);
    if (bytes.size() > MaximumDefinition) {
        return PdtmTooShort;
    }
    const std::string newPath = realPath + ".new";
    FileStamp written;
    int error = writeNewFile(newPath, fileImage(bytes, order), written);
    if (error == 0 && rename(newPath.c_str(), realPath.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        unlink(newPath.c_str());
        return statusOfWriteError(error);
    }
    stamp = written;
    return PdtmOk;
}

namespace {

/** Opens the file that @p stamp tells for writing; -1 when it can't be, or when another one stands there. */
int openSame(const std::string &path, const FileStamp &stamp)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status = {};
    if (file >= 0 && (fstat(file, &status) != 0 || stampFrom(status) != stamp)) {
        close(file);
        return -1;
    }
    return file;
}

/** Closes a file that was written. */
void closeWritten(int file, FileStamp &stamp)
{
    struct stat status = {};
    if (fstat(file, &status) == 0) {
        stamp = stampFrom(status);
    }
    close(file);
}

bool writeOver(int file, const std::string &bytes, int64_t formerSize)
{
    const auto size = static_cast<off_t>(bytes.size());
    return lseek(file, 0, SEEK_SET) == 0 && writeAll(file, bytes.data(), bytes.size()) &&
           (size >= formerSize || ftruncate(file, size) == 0);
}

} // namespace

PdtmStatus fillIndexFile(const std::string &realPath, const IndexDefinition &former,
                         const IndexDefinition &definition, const OrderImage &order, FileStamp &stamp)
{
    const std::string bytes = encoded(definition);
    const int file = bytes.size() <= MaximumDefinition ? openSame(realPath, stamp) : -1;
    if (file < 0) {
        return writeIndexFile(realPath, definition, order, stamp);
    }
    const int error = writeOver(file, fileImage(bytes, order), stamp.size) ? 0 : errno;
    if (error != 0) {
        static_cast<void>(writeOver(file, fileImage(encoded(former), OrderImage()), INT64_MAX));
    }
    closeWritten(file, stamp);
    return error == 0 ? PdtmStatus{PdtmOk} : statusOfWriteError(error);
}

PdtmStatus writeIndexCounter(const std::string &realPath, uint64_t counter, FileStamp &stamp)
{
    IndexFileReader reader;
    const PdtmStatus status = reader.open(realPath);
    if (status != PdtmOk) {
        return status;
    }
    if (reader.stamp() != stamp || reader.counter() == 0) {
        return PdtmDamaged;
    }
    const int file = openSame(realPath, stamp);
    if (file < 0) {
        return statusOfWriteError(errno);
    }
    const StoredCounter stored = StoredCounter::of(counter);
    const ssize_t written = pwrite(file, &stored, sizeof stored, static_cast<off_t>(reader.counterOffset()));
    const int error = written < 0 ? errno : (written != sizeof stored ? EIO : 0);
    closeWritten(file, stamp);
    return error == 0 ? PdtmStatus{PdtmOk} : statusOfWriteError(error);
}

PdtmStatus checkIndexFile(const std::string &realPath)
{
    IndexFileReader reader;
    const PdtmStatus status = reader.open(realPath);
    if (status != PdtmOk) {
        return status;
    }
    return reader.definition().language == language() ? PdtmOk : PdtmOtherLanguage;
}

} // namespace pdtm
