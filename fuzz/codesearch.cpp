// The addresses of postal codes and their neighbours, from files of any bytes; few of them, and all of one
// code.
#include "postalfiles.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto files = postalFiles(data, size);
    require(!imagebuilder::searchAllCodes(files->info()));
    constexpr uint32_t MoreThanAreGiven = 1000;
    require(imagebuilder::searchCode("1000005", files->info(), MoreThanAreGiven));
    return 0;
}
