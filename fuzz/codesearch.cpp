// The addresses of postal codes and their neighbours, from files of any bytes.
#include "postalfiles.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto files = postalFiles(data, size);
    require(!imagebuilder::searchAllCodes(files->info()));
    return 0;
}
