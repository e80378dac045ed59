#include "ydiccode_p.h"

#include "ydicbytes_p.h"

namespace {

/* Kinds of changes. All greater ones are removals too, but for that of a missing neighbour. */
constexpr uint8_t Kept = 0;
constexpr uint8_t Removed = 2;
constexpr uint8_t Missing = 255;

/** A row of the table. */
struct Change
{
    int32_t number;
    uint8_t kind;
};

/* A row before the first or behind the last one lies beyond all codes, so that 0000000 and 9999999 have it
 * for a neighbour too. */
constexpr Change NothingBefore = {-1, Missing};
constexpr Change NothingBehind = {YDIC_LAST_CODE + 1, Missing};

/** A row with those beside it. */
struct Window
{
    Change previous;
    Change current;
    Change next;
};

/** What the kinds of rows around the number mean. */
enum class Decision : uint8_t {
    None,      // there is no neighbour
    Ask,       // the dictionary knows it
    Current,   // it is the current row
    Neighbour, // it is the row beside it, in the direction of the walk
    Scan       // it is the first one behind that row which isn't removed
};

/* By the kind of the current row and by that of the one beside it: Kept, Added, Removed, Missing. */
using Decisions = Decision[3][4];

/* The number is that of the current row, or the walk leads from it away from that row. */
constexpr Decisions WalkLeadsAway = {
    {Decision::Ask, Decision::Neighbour, Decision::Scan, Decision::Ask},
    {Decision::Neighbour, Decision::Neighbour, Decision::Scan, Decision::None},
    {Decision::Neighbour, Decision::Neighbour, Decision::Scan, Decision::None},
};

/* The walk leads from the number to the current row. A kept row is decided by the row at the number's other
 * side. */
constexpr Decisions WalkLeadsHere = {
    {Decision::Ask, Decision::Current, Decision::Current, Decision::Ask},
    {Decision::Current, Decision::Current, Decision::Current, Decision::Current},
    {Decision::Neighbour, Decision::Neighbour, Decision::Scan, Decision::None},
};

/** A number that is looked for in the changes. */
struct Walk
{
    int32_t number;
    char *near;
    bool isForward;
    FILE *file;
    const ydic_fields *fields;
    int32_t last; // row
};

Change changeAt(const uint8_t *bytes)
{
    return {static_cast<int32_t>(ydic_u24(bytes)), bytes[3]};
}

bool readChanges(const Walk &walk, int32_t from, int32_t count, uint8_t *bytes)
{
    return ydic_readFrom(walk.file, walk.fields->changes, static_cast<uint32_t>(from) * YDIC_CHANGE,
                         static_cast<uint32_t>(count) * YDIC_CHANGE, bytes);
}

bool readWindow(const Walk &walk, int32_t at, Window &window)
{
    uint8_t bytes[3 * YDIC_CHANGE];
    const int32_t from = at > 0 ? at - 1 : at;
    const int32_t to = at < walk.last ? at + 1 : at;
    if (!readChanges(walk, from, to - from + 1, bytes))
        return false;
    const uint8_t *current = bytes + ptrdiff_t{YDIC_CHANGE} * (at - from);
    window.current = changeAt(current);
    window.previous = from < at ? changeAt(current - YDIC_CHANGE) : NothingBefore;
    window.next = to > at ? changeAt(current + YDIC_CHANGE) : NothingBehind;
    return true;
}

int answer(const Walk &walk, const Change &change)
{
    return ydic_nearAnswer(static_cast<uint32_t>(change.number), walk.near);
}

/* The first row that isn't removed, from a row on. */
int scan(const Walk &walk, int32_t from)
{
    const int32_t step = walk.isForward ? 1 : -1;
    for (int32_t at = from; at >= 0 && at <= walk.last; at += step) {
        uint8_t bytes[YDIC_CHANGE];
        if (!readChanges(walk, at, 1, bytes))
            return -1;
        const Change change = changeAt(bytes);
        if (change.kind < Removed)
            return answer(walk, change);
    }
    return ydic_nearNone(walk.near);
}

unsigned currentColumn(uint8_t kind)
{
    return kind < Removed ? kind : Removed;
}

unsigned neighbourColumn(uint8_t kind)
{
    return kind == Missing ? 3 : currentColumn(kind);
}

int follow(const Walk &walk, Decision decision, int32_t at, const Window &window)
{
    switch (decision) {
    case Decision::None:
        return ydic_nearNone(walk.near);
    case Decision::Ask:
        return YDIC_NEAR_UNDECIDED;
    case Decision::Current:
        return answer(walk, window.current);
    case Decision::Neighbour:
        return answer(walk, walk.isForward ? window.next : window.previous);
    case Decision::Scan:
        return scan(walk, walk.isForward ? at + 2 : at - 2);
    }
    return -1;
}

bool isBetween(int32_t number, const Change &lower, const Change &upper)
{
    return lower.number < number && number < upper.number;
}

/* False: the number is nowhere near this row. */
bool decide(const Walk &walk, const Window &window, Decision &decision)
{
    const bool isBefore = isBetween(walk.number, window.previous, window.current);
    const bool isBehind = isBetween(walk.number, window.current, window.next);
    const Change &ahead = walk.isForward ? window.next : window.previous;
    const Change &behind = walk.isForward ? window.previous : window.next;
    const unsigned current = currentColumn(window.current.kind);
    if (walk.number == window.current.number || (walk.isForward ? isBehind : isBefore)) {
        decision = WalkLeadsAway[current][neighbourColumn(ahead.kind)];
        return true;
    }
    if (walk.isForward ? isBefore : isBehind) {
        const Change &deciding = current == Kept ? behind : ahead;
        decision = WalkLeadsHere[current][neighbourColumn(deciding.kind)];
        return true;
    }
    return false;
}

} // namespace

int near_numberSchPch(uint32_t number, char *near, uint8_t direction, FILE *file, const ydic_fields *fields)
{
    const auto rows = static_cast<int32_t>(fields->changesSize / YDIC_CHANGE);
    const Walk walk = {static_cast<int32_t>(number), near, direction == YDIC_NEXT, file, fields, rows - 1};
    int32_t low = 0;
    int32_t high = walk.last;
    while (low <= high) {
        const int32_t middle = low + (high - low) / 2;
        Window window;
        if (!readWindow(walk, middle, window))
            return -1;
        Decision decision;
        if (decide(walk, window, decision))
            return follow(walk, decision, middle, window);
        if (window.current.number < walk.number)
            low = middle + 1;
        else
            high = middle - 1;
    }
    return YDIC_NEAR_UNDECIDED;
}
