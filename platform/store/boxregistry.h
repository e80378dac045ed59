#ifndef PDTM_BOXREGISTRY_H
#define PDTM_BOXREGISTRY_H

#include "sqlitebox.h"

#include <memory>
#include <sys/types.h>
#include <vector>

namespace pdtm {

enum class OpenMode : uint8_t {
    Hold = 0,  ///< _BoxOpenRwMode() with mode 0
    Read = 1,  ///< _BoxOpenRwMode() with mode 1
    Brief = 2, ///< _BoxOpen()
};

/** A handle that is open. */
struct OpenHandle
{
    uint32_t number = 0;
    OpenMode mode = OpenMode::Read;
    std::shared_ptr<SqliteBox> box;
};

/** The boxes and handles of this process. A box is there once, however many handles and paths lead to it. */
class BoxRegistry
{
public:
    static BoxRegistry &instance();
    ~BoxRegistry();

    [[nodiscard]] PdtmStatus open(const std::string &realPath, OpenMode mode, uint32_t &handle);
    [[nodiscard]] PdtmStatus close(uint32_t handle);
    /** Null when it is not open. Valid until the next open or close. */
    [[nodiscard]] const OpenHandle *find(uint32_t handle) const;
    /** The box of a path if some handle is open on it, else null. */
    [[nodiscard]] std::shared_ptr<SqliteBox> ifOpen(const std::string &realPath) const;

    /** The box of a path, connected for a short use; dropUnused() ends the use. */
    [[nodiscard]] PdtmStatus borrow(const std::string &realPath, std::shared_ptr<SqliteBox> &box);
    /** Ends the connections without a handle, except those on internal storage, which rest. */
    void dropUnused();
    /** Gives the lock of a held box back. Without a handle its connection ends, unless it may rest. */
    void release(SqliteBox &box);
    /** The file is about to be read or deleted: no resting connection to it stays. */
    void forget(const std::string &realPath);
    /** The file lost its name; handles on it go on reading it. */
    void markDeleted(const std::string &realPath);

private:
    BoxRegistry();
    [[nodiscard]] bool hasHandle(const SqliteBox &box) const;
    void dropTouched();
    uint32_t nextNumber();

    std::vector<OpenHandle> m_handles;
    std::vector<std::shared_ptr<SqliteBox>> m_boxes;
    uint32_t m_lastNumber = 0;
    pid_t m_process;
};

/** A box that an operation on a path uses. */
class BorrowedBox
{
public:
    explicit BorrowedBox(const std::string &realPath)
        : m_status(BoxRegistry::instance().borrow(realPath, m_box))
    {
    }
    ~BorrowedBox()
    {
        m_box.reset();
        BoxRegistry::instance().dropUnused();
    }
    BorrowedBox(const BorrowedBox &) = delete;
    BorrowedBox &operator=(const BorrowedBox &) = delete;

    [[nodiscard]] PdtmStatus status() const { return m_status; }
    SqliteBox *operator->() const { return m_box.get(); }
    SqliteBox &operator*() const { return *m_box; }

private:
    std::shared_ptr<SqliteBox> m_box;
    PdtmStatus m_status;
};

/** The path with all links followed; as it is when there is no such file. */
[[nodiscard]] std::string canonicalPath(const std::string &path);

} // namespace pdtm

#endif
