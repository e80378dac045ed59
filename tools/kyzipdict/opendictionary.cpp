#include "opendictionary.h"

#include "wholefile.h"
#include "ydicbytes_p.h"
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace ZipDict {

namespace {

constexpr const char *OwnDictionary = "../share/libky/yubin02.dat"; // from the program's folder
constexpr int OwnSlot = 4;
constexpr size_t HeadLength = 100;

/** A file with the part of its header that tells what it is. */
struct HeadedFile
{
    File file;
    uint8_t head[HeadLength] = {};
};

bool isGood(HeadedFile &headed, uint8_t type)
{
    struct stat status = {};
    const uint8_t *head = headed.head;
    return std::fread(headed.head, 1, HeadLength, headed.file.get()) == HeadLength && head[0] == 0xFF &&
           head[1] == 0x00 && head[2] == 0x28 && head[YDIC_AT_TYPE] == type &&
           fstat(fileno(headed.file.get()), &status) == 0 &&
           ydic_u32(head + YDIC_AT_FILE_SIZE) == status.st_size;
}

HeadedFile openFile(const std::string &path, uint8_t type)
{
    HeadedFile headed;
    headed.file.reset(std::fopen(path.c_str(), "rb"));
    if (!headed.file) {
        std::fprintf(stderr, "kyzipdict: %s: %s\n", path.c_str(), std::strerror(errno));
    } else if (!isGood(headed, type)) {
        std::fprintf(stderr, "kyzipdict: %s is no %s, or a damaged one\n", path.c_str(),
                     type == YDIC_PATCH ? "patch" : "dictionary");
        headed.file.reset();
    }
    return headed;
}

/* As ZipInit() leaves it, so that ZipFin() closes what is open. */
OpenDictionary handleOf(File dictionary, File patch)
{
    OpenDictionary handle(static_cast<ydic_info *>(std::calloc(1, sizeof(ydic_info))));
    if (!handle)
        return nullptr;
    handle->dictFile = dictionary.release();
    handle->opened[OwnSlot] = 1;
    handle->patchFile = patch.release();
    handle->hasPatch = handle->patchFile ? 1 : 0;
    return handle;
}

std::string ownDictionary()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string program(path, length > 0 ? static_cast<size_t>(length) : 0);
    return program.substr(0, program.rfind('/') + 1) + OwnDictionary;
}

} // namespace

OpenDictionary openNamed(const std::string &dictionary, const std::string &patch)
{
    HeadedFile main = openFile(dictionary, YDIC_DICTIONARY);
    if (!main.file || patch.empty())
        return main.file ? handleOf(std::move(main.file), nullptr) : nullptr;
    HeadedFile correction = openFile(patch, YDIC_PATCH);
    if (!correction.file)
        return nullptr;
    const unsigned corrects = correction.head[YDIC_AT_CORRECTS];
    const unsigned edition = main.head[YDIC_AT_EDITION];
    if (corrects != edition) {
        std::fprintf(stderr, "kyzipdict: %s corrects edition %u, and %s is edition %u\n", patch.c_str(),
                     corrects, dictionary.c_str(), edition);
        return nullptr;
    }
    return handleOf(std::move(main.file), std::move(correction.file));
}

OpenDictionary openInstalled()
{
    ydic_info *info = nullptr;
    const int result = ZipInit(&info);
    OpenDictionary handle(info);
    if (result >= 0)
        return handle;
    handle.reset();
    if (result == ZIP_INIT_NO_GOOD_FILE)
        std::fputs("kyzipdict: the installed dictionary is damaged, the program's own is used\n", stderr);
    // The analyser doesn't see that the handle frees itself.
    return openNamed(ownDictionary(), {}); // NOLINT(clang-analyzer-unix.Malloc)
}

} // namespace ZipDict
