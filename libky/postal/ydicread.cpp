#include "ydicfile_p.h"

#include "ydicbytes_p.h"

int ydic_readAt(FILE *file, uint32_t offset, uint32_t count, void *buffer)
{
    return file && fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0 &&
           fread(buffer, 1, count, file) == count;
}

int ReadDic(uint32_t offset, uint32_t count, void *buffer, uint8_t fileSel, ydic_info *info)
{
    FILE *file = fileSel == 0 ? info->dictFile : info->patchFile;
    return ydic_readAt(file, offset, count, buffer) ? 0 : YDIC_NOT_READ;
}

int header_Read(FILE *file, ydic_fields *fields, uint8_t *scratch)
{
    if (!ydic_readAt(file, 0, YDIC_HEADER_LENGTH, scratch))
        return -1;
    fields->codeIndex1 = ydic_u32(scratch + YDIC_AT_CODE_INDEX1);
    fields->codeIndex1Size = ydic_u32(scratch + YDIC_AT_CODE_INDEX1 + 4);
    fields->baseA = ydic_u32(scratch + YDIC_AT_BASE_A);
    fields->baseASize = ydic_u32(scratch + YDIC_AT_BASE_A + 4);
    fields->baseB = ydic_u32(scratch + YDIC_AT_BASE_B);
    fields->baseBSize = ydic_u32(scratch + YDIC_AT_BASE_B + 4);
    fields->numberIndex = ydic_u32(scratch + YDIC_AT_NUMBER_INDEX);
    fields->numberIndexSize = ydic_u32(scratch + YDIC_AT_NUMBER_INDEX + 4);
    fields->numberRuns = ydic_u32(scratch + YDIC_AT_NUMBER_RUNS);
    fields->numberRunsSize = ydic_u32(scratch + YDIC_AT_NUMBER_RUNS + 4);
    fields->changes = ydic_u32(scratch + YDIC_AT_CHANGES);
    fields->changesSize = ydic_u32(scratch + YDIC_AT_CHANGES + 4);
    fields->sliceLimit = ydic_u32(scratch + YDIC_AT_SLICE_LIMIT);
    return 1;
}

int ask1ji_tblRead(FILE *file, char *ask1ji)
{
    return ydic_readAt(file, YDIC_HEADER_LENGTH, YDIC_ASK1JI_LENGTH, ask1ji) ? 1 : -1;
}
