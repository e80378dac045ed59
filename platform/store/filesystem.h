#ifndef PDTM_FILESYSTEM_H
#define PDTM_FILESYSTEM_H

#include "pdtm.h"

#include <optional>
#include <string>

namespace pdtm {

/** What tells one file from another, and what is known without opening it. */
struct FileIdentity
{
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t size = 0;
    bool isRegular = false;
};

/** Nothing when there is no such file. */
[[nodiscard]] std::optional<FileIdentity> fileIdentity(const std::string &path);
/** The folder that holds @p path can take new files. */
[[nodiscard]] bool canWriteFolder(const std::string &path);
/** Folder part of a real path without its last slash, "." when it has none. */
[[nodiscard]] std::string folderOf(const std::string &path);
/** Waits until file and folder entry are on the disk. PdtmIoError, PdtmOutOfSpace */
[[nodiscard]] PdtmStatus synchroniseFile(const std::string &path);
[[nodiscard]] PdtmStatus synchroniseFolder(const std::string &folder);
/** Writes all bytes to an open file; false with errno set when that fails. */
[[nodiscard]] bool writeAll(int file, const char *data, size_t size);
/** PdtmIoError, PdtmOutOfSpace */
[[nodiscard]] PdtmStatus copyFile(const std::string &source, const std::string &destination);
/** Renames, but never onto a file that is there: PdtmExists. */
[[nodiscard]] PdtmStatus renameToNew(const std::string &from, const std::string &to);
/** Status of a failed system call. */
[[nodiscard]] PdtmStatus statusOfError(int error);
/** Bytes that may still be written to the volume of @p path. */
[[nodiscard]] uint64_t freeSpace(const std::string &path);

} // namespace pdtm

#endif
