#include "boxregistry.h"

#include "environment.h"
#include "filesystem.h"
#include "indexfamily.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <unistd.h>

namespace pdtm {

namespace {

/** Volumes other than that of internal storage may be unmounted: no descriptor stays open there. */
bool isOnInternalStorage(const std::string &path)
{
    char folder[4096];
    if (GetBuiltinStorageDtmPath(folder) != PdtmOk)
        return false;
    const auto internal = fileIdentity(folder);
    const auto file = fileIdentity(path);
    return internal && file && internal->device == file->device;
}

/** Runs a test of a box; false when memory runs short. */
template <typename Test> bool holds(Test test) noexcept
{
    try {
        return test();
    } catch (const std::exception &) {
        return false;
    }
}

bool mayRest(SqliteBox &box)
{
    return holds(
        [&] { return !box.isDeleted() && !box.database().isReadOnly() && isOnInternalStorage(box.path()); });
}

} // namespace

std::string canonicalPath(const std::string &path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
    return resolved ? std::string(resolved.get()) : path;
}

BoxRegistry &BoxRegistry::instance()
{
    static BoxRegistry registry;
    return registry;
}

BoxRegistry::BoxRegistry() : m_process(getpid()) {}

BoxRegistry::~BoxRegistry()
{
    // A forked child has none of the locks: its copies of the connections must not end.
    const bool isForked = getpid() != m_process;
    for (const auto &box : m_boxes) {
        if (isForked)
            box->database().abandon();
        else
            box->shutDown();
    }
}

bool BoxRegistry::hasHandle(const SqliteBox &box) const
{
    return std::ranges::any_of(m_handles, [&](const OpenHandle &handle) { return handle.box.get() == &box; });
}

/** Resting connections that no longer show what stands in the file are of no use. */
void BoxRegistry::dropTouched()
{
    std::erase_if(m_boxes, [this](const auto &box) {
        return !hasHandle(*box) && !holds([&] { return box->isUntouched(); });
    });
}

void BoxRegistry::dropUnused()
{
    std::erase_if(m_boxes, [this](const auto &box) {
        if (hasHandle(*box))
            return false;
        const bool isNoted = holds([&] {
            box->rest();
            return true;
        });
        return !isNoted || !mayRest(*box);
    });
}

void BoxRegistry::forget(const std::string &realPath)
{
    std::erase_if(m_boxes, [&](const auto &box) { return !hasHandle(*box) && box->isSameFile(realPath); });
}

void BoxRegistry::markDeleted(const std::string &realPath)
{
    for (const auto &box : m_boxes) {
        if (box->path() == realPath)
            box->markDeleted();
    }
}

void BoxRegistry::release(SqliteBox &box)
{
    box.release(!hasHandle(box) && !mayRest(box));
}

PdtmStatus BoxRegistry::borrow(const std::string &realPath, std::shared_ptr<SqliteBox> &box)
{
    dropTouched();
    const auto found =
        std::ranges::find_if(m_boxes, [&](const auto &known) { return known->isSameFile(realPath); });
    if (found != m_boxes.end()) {
        box = *found;
        return box->refresh();
    }
    const PdtmStatus status = SqliteBox::open(canonicalPath(realPath), box);
    if (status == PdtmOk)
        m_boxes.push_back(box);
    return status;
}

uint32_t BoxRegistry::nextNumber()
{
    do {
        ++m_lastNumber;
    } while (m_lastNumber == 0 || find(m_lastNumber));
    return m_lastNumber;
}

const OpenHandle *BoxRegistry::find(uint32_t handle) const
{
    for (const OpenHandle &open : m_handles) {
        if (open.number == handle)
            return &open;
    }
    return nullptr;
}

std::shared_ptr<SqliteBox> BoxRegistry::ifOpen(const std::string &realPath) const
{
    for (const OpenHandle &open : m_handles) {
        if (open.box->path() == realPath && !open.box->isDeleted())
            return open.box;
    }
    for (const OpenHandle &open : m_handles) {
        if (open.box->isSameFile(realPath))
            return open.box;
    }
    return nullptr;
}

PdtmStatus BoxRegistry::open(const std::string &realPath, OpenMode mode, uint32_t &handle)
{
    m_handles.reserve(m_handles.size() + 1); // nothing fails once the lock is taken
    std::shared_ptr<SqliteBox> box;
    PdtmStatus status = borrow(realPath, box);
    if (status == PdtmOk && mode == OpenMode::Hold)
        status = box->hold();
    if (status != PdtmOk) {
        box.reset();
        dropUnused();
        return status;
    }
    handle = nextNumber();
    m_handles.push_back({handle, mode, box});
    family::boxOpened(*box);
    return PdtmOk;
}

PdtmStatus BoxRegistry::close(uint32_t handle)
{
    const OpenHandle *open = find(handle);
    if (!open)
        return PdtmBadArgument;
    const std::shared_ptr<SqliteBox> box = open->box;
    const bool isHolder = open->mode == OpenMode::Hold;
    if (isHolder) {
        box->endActions();
        family::boxClosing(*box);
    }
    std::erase_if(m_handles, [handle](const OpenHandle &known) { return known.number == handle; });
    if (isHolder)
        release(*box);
    dropUnused();
    return PdtmOk;
}

std::shared_ptr<BoxFile> BoxFile::ofHandle(uint32_t handle)
{
    const OpenHandle *open = BoxRegistry::instance().find(handle);
    return open ? open->box : nullptr;
}

std::shared_ptr<BoxFile> BoxFile::ifOpen(const std::string &realPath)
{
    return BoxRegistry::instance().ifOpen(realPath);
}

} // namespace pdtm
