#ifndef BENCHMARKS_SCRATCH_H
#define BENCHMARKS_SCRATCH_H

#include <string>

/** The folder named by `--dir FOLDER`, the current one without that; ends the process for other arguments. */
[[nodiscard]] std::string parentFolder(int argc, char **argv);

/** A folder for one run, removed at its end. It is the home of the store's internal storage, too. */
class Scratch
{
public:
    /** @param parent has to be on a disk, else the process ends */
    explicit Scratch(const std::string &parent);
    ~Scratch();
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
    [[nodiscard]] std::string file(const std::string &name) const { return m_path + "/" + name; }

private:
    [[nodiscard]] bool isInMemory() const;
    std::string m_path;
};

#endif
