#include "environment.h"

#include "pdtm.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace pdtm {

namespace {

constexpr std::string_view InternalDrive = "F0:";
constexpr const char *CardFolder = "/Applications/dtm";
constexpr size_t LongestLogicalPath = 255;
constexpr size_t RealPathRoom = 4096;
constexpr size_t NameRoom = 256;
constexpr size_t LongestLanguageCode = 31;

std::string &currentLanguage()
{
    static std::string language = "ja";
    return language;
}

/** Length of a drive prefix such as `F0:`, 0 when the path has none. */
size_t drivePrefixLength(std::string_view path)
{
    const bool isDrive = path.size() >= InternalDrive.size() &&
                         std::isalpha(static_cast<unsigned char>(path[0])) &&
                         std::isdigit(static_cast<unsigned char>(path[1])) && path[2] == ':';
    return isDrive ? InternalDrive.size() : 0;
}

/** Length of the directory part: the drive prefix, or all up to the last slash. */
size_t directoryLength(std::string_view path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? drivePrefixLength(path) : slash + 1;
}

bool makeFolder(const std::string &folder)
{
    return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST;
}

std::string &madeFolder()
{
    static std::string folder;
    return folder;
}

/** The folder of internal storage without a slash at the end; empty when there is no home or it can't be
 * made. */
std::string internalFolder()
{
    const char *home = std::getenv("HOME");
    if (!home || !*home)
        return {};
    std::string folder = std::string(home) + CardFolder;
    if (folder == madeFolder())
        return folder;
    if (!makeFolder(folder.substr(0, folder.rfind('/'))) || !makeFolder(folder))
        return {};
    madeFolder() = folder;
    return folder;
}

PdtmStatus copyText(char *destination, size_t room, const std::string &text)
{
    if (!destination || text.empty())
        return PdtmBadArgument;
    if (text.size() >= room)
        return PdtmTooShort;
    std::memcpy(destination, text.c_str(), text.size() + 1);
    return PdtmOk;
}

/** A folder with the slash or drive prefix that a name can follow. */
std::string asFolderPart(std::string folder)
{
    if (!folder.empty() && folder.back() != '/' && folder != InternalDrive)
        folder += '/';
    return folder;
}

/** True when no file has that name; false for a path that is none, too. */
bool isFree(const std::string &logicalPath)
{
    const std::string path = realPath(logicalPath.c_str());
    struct stat information;
    return !path.empty() && lstat(path.c_str(), &information) != 0 && errno == ENOENT;
}

/** Number of names that a field of some digits can tell apart; 0 for a width that no name needs. */
uint64_t nameCount(int digits)
{
    constexpr int WidestField = 9;
    uint64_t count = digits >= 1 && digits <= WidestField ? 1 : 0;
    for (int i = 0; i < digits && count; ++i)
        count *= 10;
    return count;
}

} // namespace

const std::string &language()
{
    return currentLanguage();
}

std::string realPath(const char *logicalPath)
{
    if (!DtmGetBaseNamePtr(logicalPath))
        return {};
    const std::string_view path = logicalPath;
    if (!path.starts_with(InternalDrive))
        return std::string(path);
    const std::string folder = internalFolder();
    return folder.empty() ? folder : folder + "/" + std::string(path.substr(InternalDrive.size()));
}

std::string realPathOfNew(const char *logicalPath)
{
    madeFolder().clear();
    return realPath(logicalPath);
}

std::string directoryPart(const std::string &path)
{
    return path.substr(0, directoryLength(path));
}

} // namespace pdtm

using namespace pdtm;

PdtmStatus DtmSetLanguage(const char *language)
{
    if (!language || !*language || std::strlen(language) > LongestLanguageCode)
        return PdtmBadArgument;
    currentLanguage() = language;
    return PdtmOk;
}

const char *DtmGetBaseNamePtr(const char *path)
{
    if (!path)
        return nullptr;
    const std::string_view text(path, strnlen(path, LongestLogicalPath + 1));
    if (text.empty() || text.size() > LongestLogicalPath)
        return nullptr;
    if (drivePrefixLength(text) && !text.starts_with(InternalDrive))
        return nullptr;
    const std::string_view name = text.substr(directoryLength(text));
    return name.empty() || name == "." || name == ".." ? nullptr : name.data();
}

PdtmStatus FileGetRealPath(char *destination, const char *logicalPath)
{
    return copyText(destination, RealPathRoom, realPath(logicalPath));
}

PdtmStatus GetBuiltinStorageDtmPath(char *destination)
{
    const std::string folder = internalFolder();
    return folder.empty() ? PdtmStatus(PdtmIoError) : copyText(destination, RealPathRoom, folder);
}

PdtmStatus GetExternalStorageDtmPath(char *destination)
{
    return copyText(destination, std::strlen(CardFolder) + 1, CardFolder);
}

int GetNewFileName(const char *directory, char *name, const char *extension, int position, int digits)
{
    const uint64_t count = nameCount(digits);
    if (!directory || !name || !extension || position < 0 || count == 0)
        return 0;
    const std::string stem(name, strnlen(name, NameRoom));
    const auto field = static_cast<size_t>(position);
    const auto width = static_cast<size_t>(digits);
    if (field + width > stem.size() || stem.size() + std::strlen(extension) >= NameRoom)
        return 0;
    const std::string folder = asFolderPart(directory);
    for (uint64_t number = 0; number < count; ++number) {
        std::string candidate = stem + extension;
        const std::string text = std::to_string(number);
        candidate.replace(field, width, std::string(width - text.size(), '0') + text);
        if (isFree(folder + candidate)) {
            std::memcpy(name, candidate.c_str(), candidate.size() + 1);
            return 1;
        }
    }
    return 0;
}
