#include "ydicfile_p.h"

#include "deviceroot.h"
#include "ydicbytes_p.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

const char Path_cfsh_dic[] = "/mnt/sd/QtPalmtop/etc/yubin02.dat";
const char Path_cfsh_pch[] = "/mnt/sd/QtPalmtop/etc/yubin02.dat";
const char Path_hfsh_dic[] = "/mnt/cf/QtPalmtop/etc/yubin02.dat";
const char Path_hfsh_pch[] = "/mnt/cf/QtPalmtop/etc/yubin02.dat";
const char Path_hrom_dic[] = "/home/QtPalmtop/etc/yubin02.dat";

namespace {

enum Slot : uint8_t { SdDictionary, SdPatch, CfDictionary, CfPatch, InternalDictionary };

constexpr const char *Paths[YDIC_SLOTS] = {Path_cfsh_dic, Path_cfsh_pch, Path_hfsh_dic, Path_hfsh_pch,
                                           Path_hrom_dic};

// A combination is three times the number of its dictionary, and 0 alone, 1 with the SD patch, 2 with the
// CF patch.
constexpr uint8_t DictionarySlots[] = {SdDictionary, CfDictionary, InternalDictionary};
constexpr int CombinationsOfDictionary = 3, WithSdPatch = 1, WithCfPatch = 2;
constexpr uint8_t Priorities[YDIC_COMBINATIONS] = {9, 6, 5, 8, 4, 3, 7, 2, 1};

constexpr uint8_t Magic[] = {0xFF, 0x00, 0x28};

/** A pipe or a folder opens at once, too, and fails when it is read: nobody waits for a writer. */
FILE *openFile(const char *path)
{
    char place[PATH_MAX];
    if (kyDevicePath(path, place, sizeof place) >= sizeof place)
        return nullptr;
    const int descriptor = open(place, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    FILE *file = fdopen(descriptor, "rb");
    if (!file)
        close(descriptor);
    return file;
}

bool isPatchSlot(uint8_t slot)
{
    return slot == SdPatch || slot == CfPatch;
}

bool isOfKind(const uint8_t *head, uint8_t slot)
{
    return memcmp(head, Magic, sizeof Magic) == 0 &&
           head[YDIC_AT_TYPE] == (isPatchSlot(slot) ? YDIC_PATCH : YDIC_DICTIONARY);
}

/** @param head receives the first bytes of the file */
uint8_t testFile(FILE *file, uint8_t slot, uint8_t *head)
{
    if (!ydic_readAt(file, 0, sizeof ydic_info::fileHead[0], head))
        return YDIC_FILE_NOT_READ;
    if (!isOfKind(head, slot))
        return YDIC_FILE_WRONG_KIND;
    uint8_t size[4];
    struct stat found;
    if (!ydic_readAt(file, YDIC_AT_FILE_SIZE, sizeof size, size) || fstat(fileno(file), &found) != 0)
        return YDIC_FILE_NOT_READ;
    return found.st_size == static_cast<off_t>(ydic_u32(size)) ? YDIC_FILE_GOOD : YDIC_FILE_WRONG_SIZE;
}

bool isGood(const ydic_info *info, uint8_t slot)
{
    return info->fileStatus[slot] == YDIC_FILE_GOOD;
}

/** Two good patches between the same editions, and the one of the CF card is the later one. */
bool isCfPatchLater(const ydic_info *info)
{
    const uint8_t *sd = info->fileHead[SdPatch], *cf = info->fileHead[CfPatch];
    return isGood(info, SdPatch) && isGood(info, CfPatch) && sd[YDIC_AT_CORRECTS] == cf[YDIC_AT_CORRECTS] &&
           sd[YDIC_AT_EDITION] == cf[YDIC_AT_EDITION] && sd[YDIC_AT_SERIAL] < cf[YDIC_AT_SERIAL];
}

void preferCfPatch(uint8_t *priorities)
{
    for (int alone = 0; alone < YDIC_COMBINATIONS; alone += CombinationsOfDictionary) {
        --priorities[alone + WithSdPatch];
        ++priorities[alone + WithCfPatch];
    }
}

/** @param edition of the dictionary @param combined receives the edition that both make
 * @return whether the patch fits the dictionary */
bool applyPatch(const ydic_info *info, uint8_t slot, uint8_t edition, uint8_t *combined)
{
    if (!isGood(info, slot) || info->fileHead[slot][YDIC_AT_CORRECTS] != edition)
        return false;
    *combined = info->fileHead[slot][YDIC_AT_EDITION];
    return true;
}

void readEditions(const ydic_info *info, uint8_t *editions)
{
    for (const uint8_t slot : DictionarySlots) {
        if (isGood(info, slot))
            *editions = info->fileHead[slot][YDIC_AT_EDITION];
        editions += CombinationsOfDictionary;
    }
}

bool hasDictionary(const uint8_t *editions)
{
    return editions[0] || editions[3] || editions[6];
}

int whyNoDictionary(const ydic_info *info)
{
    for (const uint8_t slot : DictionarySlots)
        if (info->fileStatus[slot] != YDIC_FILE_ABSENT)
            return ZIP_INIT_NO_GOOD_FILE;
    return ZIP_INIT_NO_FILE;
}

bool openChosen(uint8_t slot, FILE **file, ydic_info *info)
{
    *file = openFile(Paths[slot]);
    if (!*file)
        return false;
    info->opened[slot] = 1;
    return true;
}

/** The files may have gone since they were tested: without its patch a dictionary is still of use. */
int openCombination(int combination, ydic_info *info)
{
    if (!openChosen(DictionarySlots[combination / CombinationsOfDictionary], &info->dictFile, info))
        return ZIP_INIT_NO_GOOD_FILE;
    const int patch = combination % CombinationsOfDictionary;
    if (patch && openChosen(patch == WithSdPatch ? SdPatch : CfPatch, &info->patchFile, info)) {
        info->hasPatch = 1;
        return ZIP_INIT_PATCHED;
    }
    const bool isUseless =
        info->opened[SdPatch] == YDIC_PATCH_USELESS || info->opened[CfPatch] == YDIC_PATCH_USELESS;
    return isUseless ? ZIP_INIT_USELESS_PATCH : ZIP_INIT_DICTIONARY;
}

bool isDictionaryOpen(const ydic_info *info)
{
    for (const uint8_t slot : DictionarySlots)
        if (info->opened[slot] == 1)
            return true;
    return false;
}

} // namespace

int check_fileStatus(uint8_t slot, ydic_info *info, const char *path)
{
    if (slot >= YDIC_SLOTS)
        return 0;
    info->fileStatus[slot] = YDIC_FILE_ABSENT;
    FILE *file = openFile(path);
    if (!file)
        return 0;
    info->fileStatus[slot] = testFile(file, slot, info->fileHead[slot]);
    if (fclose(file) != 0)
        info->fileStatus[slot] = YDIC_FILE_NOT_CLOSED;
    return 0;
}

int verchk_withPatch(ydic_info *info, uint8_t *editions, uint8_t *priorities)
{
    if (isCfPatchLater(info))
        preferCfPatch(priorities);
    bool isSdUsed = false, isCfUsed = false;
    for (int alone = 0; alone < YDIC_COMBINATIONS; alone += CombinationsOfDictionary) {
        const uint8_t edition = editions[alone];
        if (edition == 0)
            continue;
        const bool fitsSd = applyPatch(info, SdPatch, edition, &editions[alone + WithSdPatch]);
        const bool fitsCf = applyPatch(info, CfPatch, edition, &editions[alone + WithCfPatch]);
        // Who has been sent a correction is never shown the uncorrected dictionary.
        if (fitsSd || fitsCf)
            editions[alone] = 0;
        isSdUsed |= fitsSd;
        isCfUsed |= fitsCf;
    }
    if (isGood(info, SdPatch) && !isSdUsed)
        info->opened[SdPatch] = YDIC_PATCH_USELESS;
    if (isGood(info, CfPatch) && !isCfUsed)
        info->opened[CfPatch] = YDIC_PATCH_USELESS;
    return 1;
}

int latestVersion(const uint8_t *editions, const uint8_t *priorities)
{
    uint8_t edition = 1, priority = 0;
    int winner = -1;
    for (int i = 0; i < YDIC_COMBINATIONS; ++i) {
        if (editions[i] > edition || (editions[i] == edition && priorities[i] > priority)) {
            edition = editions[i];
            priority = priorities[i];
            winner = i;
        }
    }
    return winner;
}

int ZipInit(ydic_info **info)
{
    auto *handle = static_cast<ydic_info *>(calloc(1, sizeof(ydic_info)));
    *info = handle;
    if (!handle)
        return ZIP_INIT_NO_MEMORY;
    for (uint8_t slot = 0; slot < YDIC_SLOTS; ++slot)
        check_fileStatus(slot, handle, Paths[slot]);
    uint8_t editions[YDIC_COMBINATIONS] = {}, priorities[YDIC_COMBINATIONS];
    memcpy(priorities, Priorities, sizeof priorities);
    readEditions(handle, editions);
    if (!hasDictionary(editions))
        return whyNoDictionary(handle);
    verchk_withPatch(handle, editions, priorities);
    const int winner = latestVersion(editions, priorities);
    return winner < 0 ? ZIP_INIT_NO_GOOD_FILE : openCombination(winner, handle);
}

int ZipFin(ydic_info *info)
{
    if (!info)
        return 1;
    int result = 1;
    if (isDictionaryOpen(info) && fclose(info->dictFile) != 0)
        result = -1;
    if (info->hasPatch && fclose(info->patchFile) != 0 && result == 1)
        result = -2;
    free(info);
    return result;
}
