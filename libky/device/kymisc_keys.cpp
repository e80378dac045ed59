#include "kymisc.h"

#include <algorithm>
#include <QKeyEvent>

namespace {

struct KeyCommand
{
    int key;
    bool needsControl;
    int command;
};

constexpr KeyCommand KeyCommands[] = {
    {Qt::Key_C, true, 51},      {Qt::Key_M, true, 2},  {Qt::Key_N, true, 1},
    {Qt::Key_V, true, 52},      {Qt::Key_X, true, 50}, {4103, false, 3}, // the delete key's number of old
    {Qt::Key_Delete, false, 3}, {8207, false, 5},      {8208, false, 4},
};

} // namespace

int KyMisc::appCommandFromKey(const QKeyEvent &event)
{
    const bool hasControl = event.modifiers().testFlag(Qt::ControlModifier);
    const auto found = std::ranges::find_if(KeyCommands, [&](const KeyCommand &entry) {
        return entry.key == event.key() && (hasControl || !entry.needsControl);
    });
    return found == std::end(KeyCommands) ? 0 : found->command;
}
