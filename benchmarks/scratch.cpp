#include "scratch.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <linux/magic.h>
#include <sys/vfs.h>

std::string parentFolder(int argc, char **argv)
{
    if (argc == 1)
        return ".";
    if (argc == 3 && std::strcmp(argv[1], "--dir") == 0)
        return std::filesystem::absolute(argv[2]).string();
    std::fprintf(stderr, "usage: %s [--dir FOLDER]\n", argv[0]);
    std::exit(2);
}

Scratch::Scratch(const std::string &parent)
{
    std::string folder = parent + "/benchmark.XXXXXX";
    m_path = mkdtemp(folder.data()) ? folder : std::string();
    if (m_path.empty() || isInMemory()) {
        std::fprintf(stderr, "%s is no folder on a disk\n", parent.c_str());
        std::exit(2);
    }
    setenv("HOME", m_path.c_str(), 1);
}

Scratch::~Scratch()
{
    std::filesystem::remove_all(m_path);
}

bool Scratch::isInMemory() const
{
    struct statfs status;
    const bool inMemory = statfs(m_path.c_str(), &status) == 0 && status.f_type == TMPFS_MAGIC;
    if (inMemory)
        std::filesystem::remove_all(m_path);
    return inMemory;
}
