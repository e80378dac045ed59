#include "storefaults.h"
#include <csignal>
#include <dlfcn.h>
#include <QList>
#include <QPair>

namespace {

struct State
{
    QStringList calls;
    QList<QPair<QString, PdtmStatus>> faults;
    int killBefore = -1;
    int depth = 0;
};

State &state()
{
    static State instance;
    return instance;
}

template <typename Function> Function *next(const char *name, Function *)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

QString bare(const char *path)
{
    QString text = path ? QString::fromUtf8(path) : QStringLiteral("null");
    return text.startsWith("F0:") ? text.mid(3) : text;
}

/** The status forced on a call, or what the store gives. */
template <typename Result, typename Forward>
Result watched(const QString &call, Result failure, Forward forward)
{
    State &s = state();
    if (s.depth > 0)
        return forward();
    if (s.calls.size() == s.killBefore)
        raise(SIGKILL);
    s.calls.append(call);
    for (const auto &fault : std::as_const(s.faults)) {
        if (call.startsWith(fault.first))
            return failure == 0 ? Result{0} : Result(fault.second);
    }
    ++s.depth;
    const Result result = forward();
    --s.depth;
    return result;
}

constexpr PdtmStatus Status = 1;

} // namespace

void StoreFaults::reset()
{
    state() = State();
}

void StoreFaults::force(const QString &call, PdtmStatus status)
{
    state().faults.append({call, status});
}

QStringList StoreFaults::calls()
{
    return state().calls;
}

void StoreFaults::killBefore(int number)
{
    state().killBefore = number;
}

// Forwards to the definition behind this one.
#define NEXT(operation, ...) next(#operation, &operation)(__VA_ARGS__)

PdtmStatus _DTMFileCheckAppliID(const char *path, int level, uint32_t applicationId)
{
    return watched(QString("_DTMFileCheckAppliID %1 %2").arg(bare(path)).arg(level), Status,
                   [&] { return NEXT(_DTMFileCheckAppliID, path, level, applicationId); });
}

PdtmStatus _DTMFileCheckLevel(const char *path, int level)
{
    return watched(QString("_DTMFileCheckLevel %1 %2").arg(bare(path)).arg(level), Status,
                   [&] { return NEXT(_DTMFileCheckLevel, path, level); });
}

PdtmStatus _BoxCreate(const char *path, uint32_t applicationId)
{
    return watched(QString("_BoxCreate %1").arg(bare(path)), Status,
                   [&] { return NEXT(_BoxCreate, path, applicationId); });
}

PdtmStatus _BoxItemAppend(const char *path, const ITEMDATA *items, int count, uint32_t *added)
{
    return watched(QString("_BoxItemAppend %1").arg(bare(path)), Status,
                   [&] { return NEXT(_BoxItemAppend, path, items, count, added); });
}

uint32_t _BoxOpen(const char *path)
{
    return watched(QString("_BoxOpen %1").arg(bare(path)), uint32_t{0}, [&] { return NEXT(_BoxOpen, path); });
}

PdtmStatus _BoxClose(uint32_t handle)
{
    return watched(QString("_BoxClose"), Status, [&] { return NEXT(_BoxClose, handle); });
}

PdtmStatus _GetIndexName(const char *boxPath, uint32_t ordinal, char *path, uint32_t room,
                         uint32_t *permanent)
{
    return watched(QString("_GetIndexName %1 %2").arg(bare(boxPath)).arg(ordinal), Status,
                   [&] { return NEXT(_GetIndexName, boxPath, ordinal, path, room, permanent); });
}

PdtmStatus _IndexCreate(const char *path, int kind)
{
    return watched(QString("_IndexCreate %1 %2").arg(bare(path)).arg(kind), Status,
                   [&] { return NEXT(_IndexCreate, path, kind); });
}

PdtmStatus _IndexDelete(const char *path)
{
    return watched(QString("_IndexDelete %1").arg(bare(path)), Status,
                   [&] { return NEXT(_IndexDelete, path); });
}

PdtmStatus _IndexInfoRead(const char *path, int id, void *buffer, uint16_t *size)
{
    return watched(QString("_IndexInfoRead %1 %2").arg(bare(path)).arg(id), Status,
                   [&] { return NEXT(_IndexInfoRead, path, id, buffer, size); });
}

PdtmStatus _IndexInfoWrite(const char *path, int id, const void *buffer, uint16_t length)
{
    return watched(QString("_IndexInfoWrite %1 %2").arg(bare(path)).arg(id), Status,
                   [&] { return NEXT(_IndexInfoWrite, path, id, buffer, length); });
}

PdtmStatus _IndexGroup(const char *parent, const char *path, uint32_t handle)
{
    return watched(QString("_IndexGroup %1 %2").arg(bare(parent), bare(path)), Status,
                   [&] { return NEXT(_IndexGroup, parent, path, handle); });
}

PdtmStatus _IndexUnGroup(const char *path, uint32_t handle)
{
    return watched(QString("_IndexUnGroup %1").arg(bare(path)), Status,
                   [&] { return NEXT(_IndexUnGroup, path, handle); });
}

PdtmStatus _IndexSort(const char *path, uint32_t handle)
{
    return watched(QString("_IndexSort %1").arg(bare(path)), Status,
                   [&] { return NEXT(_IndexSort, path, handle); });
}
