#ifndef PDTM_INDEXREGISTRY_H
#define PDTM_INDEXREGISTRY_H

#include "index.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace pdtm {

/** The loaded indexes of one box. */
struct Family
{
    std::string boxPath;        ///< canonical
    std::weak_ptr<BoxFile> box; ///< as it was last seen
    uint64_t counter = 0;       ///< change counter of the box after the last change that came here
    bool complete = false;      ///< the folder was looked through since the box was opened
    std::vector<Index *> indexes;
};

/** Real path with the links in its folder resolved, so that one index has one name. */
[[nodiscard]] std::string indexPath(const std::string &realPath);

/** Names of the index files of a box in a folder: permanent ones first, each by its bytes. Only the folder
 * and the files are looked at. */
[[nodiscard]] std::vector<std::string> familyNames(const std::string &folder, const std::string &boxName);

/** The name is that of a permanent index: its extension begins with `IDX` or `idx`. */
[[nodiscard]] bool isPermanentName(std::string_view name);

/**
 * The indexes that this process has in memory, by path. They stay when their box closes.
 *
 * While the box is held by this process, memory is the truth. While it is open without being held, each use
 * compares file and change counter. With no box open an index is used as it was loaded.
 */
class IndexRegistry
{
public:
    static IndexRegistry &instance();

    /** The index of a path, loaded when it isn't, and brought up to date with its box. PdtmBadArgument for an
     * invalid path, or a status of IndexFileReader::open() */
    PdtmStatus use(const char *path, Index *&index);
    /** The same after a look at the file: another process may have replaced it, whatever is in memory. */
    PdtmStatus edit(const char *path, Index *&index);
    /** Takes in an index that was just made. */
    Index &adopt(std::unique_ptr<Index> index);
    /** Drops an index from memory. */
    void forget(const std::string &canonical);
    /** Drops all indexes of a box. */
    void forgetFamily(const std::string &boxPath);
    /** Sorts an index into the family that its definition names. */
    void join(Index &index);

    Family &familyOf(const BoxFile &box);
    /** The family of an index; null when its definition names no box. */
    [[nodiscard]] Family *familyOf(const Index &index);
    /** The index if it is in memory, else null. */
    [[nodiscard]] Index *loaded(const std::string &canonical);
    /** Loads one file; null when that fails. */
    Index *load(const std::string &canonical, PdtmStatus &status);
    /** Reads the file again when it was replaced, and drops the index when it is gone. */
    PdtmStatus rereadIfReplaced(Index &index);

private:
    struct TextHash
    {
        using is_transparent = void;
        size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    void noticeHome();
    PdtmStatus find(const char *path, Index *&index);
    PdtmStatus findReal(const char *path, Index *&index);
    PdtmStatus bringUpToDate(Index &index);
    Family &familyAt(const std::string &boxPath);
    void leave(Index &index);

    struct Entry
    {
        std::unique_ptr<Index> index;
        Family *family = nullptr;
    };
    std::unordered_map<std::string, Entry> m_indexes;          // by canonical path
    std::map<std::string, std::unique_ptr<Family>> m_families; // by canonical path of the box
    std::unordered_map<std::string, Family *> m_familiesByBox; // by BoxFile::path()
    std::unordered_map<std::string, Entry *, TextHash, std::equal_to<>> m_byPath; // by path as it was passed
    std::string m_home;
    std::string m_lastPath;
    Entry *m_last = nullptr; // the entry of m_lastPath
};

} // namespace pdtm

#endif
