#include "indexregistry.h"

#include "environment.h"

#include <algorithm>
#include <cstdlib>
#include <dirent.h>

namespace pdtm {

namespace {

std::string baseName(const std::string &path)
{
    return path.substr(directoryPart(path).size());
}

/** Such a path means the same file whatever the current folder is. */
bool isFixed(std::string_view path)
{
    return path.starts_with('/') || path.starts_with("F0:");
}

std::string lowered(std::string_view text)
{
    std::string out(text);
    for (char &c : out) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    }
    return out;
}

std::string_view extensionOf(std::string_view name)
{
    const size_t dot = name.find('.');
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

bool hasIndexExtension(std::string_view name)
{
    const std::string extension = lowered(extensionOf(name));
    return extension.starts_with("idx") || extension.starts_with("tdx");
}

/** Tells by the name whose index a file with an unreadable definition is, so that its owner can delete it. */
bool isNamedFor(std::string_view name, std::string_view boxName)
{
    if (!hasIndexExtension(name)) {
        return false;
    }
    if (name.starts_with("ppin") && !boxName.starts_with("ppin")) {
        return boxName.size() >= 3 && name.size() >= 7 && name.substr(4, 3) == boxName.substr(0, 3);
    }
    return name.starts_with(boxName.substr(0, boxName.find('.')));
}

/** Boxes and what belongs to them. Files of SQLite must not even be opened: see isDatabaseInUse(). */
bool isNoIndexName(std::string_view name, std::string_view boxName)
{
    return name == boxName || isCompanionOfBox(name) || lowered(extensionOf(name)) == "box";
}

bool isMember(const std::string &folder, const std::string &name, const std::string &boxName)
{
    if (isNoIndexName(name, boxName)) {
        return false;
    }
    IndexFileReader reader;
    switch (reader.open(folder + name)) {
    case PdtmOk:
        return reader.definition().box() == boxName;
    case PdtmDamaged:
        return isNamedFor(name, boxName) && !isDatabaseInUse(folder + name);
    default:
        return false;
    }
}

} // namespace

bool isPermanentName(std::string_view name)
{
    const std::string_view extension = extensionOf(name);
    return extension.starts_with("IDX") || extension.starts_with("idx");
}

std::string indexPath(const std::string &realPath)
{
    const std::string folder = directoryPart(realPath);
    const std::unique_ptr<char, decltype(&free)> resolved(
        realpath(folder.empty() ? "." : folder.c_str(), nullptr), &free);
    if (!resolved) {
        return realPath;
    }
    std::string path = resolved.get();
    if (!path.ends_with('/')) {
        path += '/';
    }
    return path + baseName(realPath);
}

std::vector<std::string> familyNames(const std::string &folder, const std::string &boxName)
{
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(opendir(folder.empty() ? "." : folder.c_str()),
                                                         &closedir);
    while (const dirent *entry = directory ? readdir(directory.get()) : nullptr) {
        const bool mayBeFile =
            entry->d_type == DT_REG || entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN;
        if (mayBeFile && isMember(folder, entry->d_name, boxName)) {
            names.emplace_back(entry->d_name);
        }
    }
    std::sort(names.begin(), names.end(), [](const std::string &left, const std::string &right) {
        const bool permanent = isPermanentName(left);
        return permanent != isPermanentName(right) ? permanent : left < right;
    });
    return names;
}

IndexRegistry &IndexRegistry::instance()
{
    // Never destroyed: an application may close its boxes while static objects end.
    static auto *const registry = new IndexRegistry;
    return *registry;
}

Family &IndexRegistry::familyAt(const std::string &boxPath)
{
    std::unique_ptr<Family> &family = m_families[boxPath];
    if (!family) {
        auto made = std::make_unique<Family>();
        made->boxPath = boxPath;
        family = std::move(made);
    }
    return *family;
}

Family &IndexRegistry::familyOf(const BoxFile &box)
{
    Family *&family = m_familiesByBox[box.path()];
    if (family == nullptr) {
        family = &familyAt(indexPath(box.path()));
    }
    return *family;
}

Family *IndexRegistry::familyOf(const Index &index)
{
    const auto found = m_indexes.find(index.path());
    return found == m_indexes.end() ? nullptr : found->second.family;
}

Index *IndexRegistry::loaded(const std::string &canonical)
{
    const auto found = m_indexes.find(canonical);
    return found == m_indexes.end() ? nullptr : found->second.index.get();
}

void IndexRegistry::leave(Index &index)
{
    Entry &entry = m_indexes.at(index.path());
    if (entry.family != nullptr) {
        std::erase(entry.family->indexes, &index);
        entry.family = nullptr;
    }
}

void IndexRegistry::join(Index &index)
{
    leave(index);
    const std::string boxName = index.definition().box();
    if (!boxName.empty()) {
        Family &family = familyAt(directoryPart(index.path()) + boxName);
        family.indexes.push_back(&index);
        m_indexes.at(index.path()).family = &family;
    }
}

Index &IndexRegistry::adopt(std::unique_ptr<Index> index)
{
    const std::string path = index->path();
    forget(path);
    Index &adopted = *index;
    m_indexes[path].index = std::move(index);
    join(adopted);
    return adopted;
}

void IndexRegistry::forget(const std::string &canonical)
{
    const auto found = m_indexes.find(canonical);
    if (found == m_indexes.end()) {
        return;
    }
    leave(*found->second.index);
    m_byPath.clear();
    m_last = nullptr;
    m_indexes.erase(found);
}

void IndexRegistry::forgetFamily(const std::string &boxPath)
{
    Family &family = familyAt(boxPath);
    while (!family.indexes.empty()) {
        forget(std::string(family.indexes.back()->path()));
    }
    family.box.reset();
    family.counter = 0;
}

Index *IndexRegistry::load(const std::string &canonical, PdtmStatus &status)
{
    auto index = std::make_unique<Index>(canonical);
    status = index->load();
    return status == PdtmOk ? &adopt(std::move(index)) : nullptr;
}

PdtmStatus IndexRegistry::findReal(const char *path, Index *&index)
{
    const std::string real = realPath(path);
    if (real.empty()) {
        return PdtmBadArgument;
    }
    const std::string canonical = indexPath(real);
    index = loaded(canonical);
    PdtmStatus status = PdtmOk;
    if (index == nullptr) {
        index = load(canonical, status);
    }
    if (index != nullptr && isFixed(path)) {
        m_byPath[path] = &m_indexes.at(canonical);
    }
    return status;
}

/** `F0:` means another folder when the home folder has changed. */
void IndexRegistry::noticeHome()
{
    const char *home = getenv("HOME");
    if (m_home != (home != nullptr ? home : "")) {
        m_home = home != nullptr ? home : "";
        m_byPath.clear();
        m_last = nullptr;
    }
}

PdtmStatus IndexRegistry::find(const char *path, Index *&index)
{
    if (path == nullptr) {
        return PdtmBadArgument;
    }
    noticeHome();
    if (m_last == nullptr || m_lastPath != path) {
        const auto found = m_byPath.find(std::string_view(path));
        if (found == m_byPath.end()) {
            return findReal(path, index);
        }
        m_last = found->second;
        m_lastPath = path;
    }
    index = m_last->index.get();
    return PdtmOk;
}

namespace {

/** The family's box if this process has it open. */
std::shared_ptr<BoxFile> openBox(Family &family)
{
    std::shared_ptr<BoxFile> box = family.box.lock();
    if (box && box->isHeld()) {
        return box;
    }
    box = BoxFile::ifOpen(family.boxPath);
    family.box = box;
    return box;
}

} // namespace

PdtmStatus IndexRegistry::rereadIfReplaced(Index &index)
{
    const std::optional<FileStamp> stamp = stampOf(index.path());
    if (stamp == index.stamp()) {
        return PdtmOk;
    }
    const PdtmStatus status = stamp ? index.load() : PdtmStatus{PdtmMissing};
    if (status == PdtmOk) {
        join(index);
    } else {
        forget(std::string(index.path()));
    }
    return status;
}

PdtmStatus IndexRegistry::bringUpToDate(Index &index)
{
    Family *family = m_last != nullptr && m_last->index.get() == &index ? m_last->family : familyOf(index);
    const std::shared_ptr<BoxFile> box = family != nullptr ? openBox(*family) : nullptr;
    if (!box) {
        return PdtmOk;
    }
    const bool held = box->isHeld();
    if (!held) {
        const PdtmStatus status = rereadIfReplaced(index);
        if (status != PdtmOk) {
            return status;
        }
    }
    const uint64_t counter = box->changeCounter();
    if (counter == 0 || index.isCurrent(counter)) {
        return PdtmOk;
    }
    if (index.rebuild(*box) && held) {
        // A folder that can't be written keeps the index in memory alone.
        static_cast<void>(index.save());
    }
    return PdtmOk;
}

PdtmStatus IndexRegistry::use(const char *path, Index *&index)
{
    const PdtmStatus status = find(path, index);
    return status == PdtmOk ? bringUpToDate(*index) : status;
}

PdtmStatus IndexRegistry::edit(const char *path, Index *&index)
{
    PdtmStatus status = find(path, index);
    if (status == PdtmOk) {
        status = rereadIfReplaced(*index);
    }
    return status == PdtmOk ? bringUpToDate(*index) : status;
}

} // namespace pdtm
