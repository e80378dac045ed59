// The postal codes of addresses, from files of any bytes; and of an address that is the end of the input.
#include "postalfiles.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto files = postalFiles(data, size);
    require(imagebuilder::searchAllAddresses(files->info()));
    const size_t length = std::min<size_t>(size, 90);
    require(imagebuilder::searchAddress({reinterpret_cast<const char *>(data) + size - length, length},
                                        files->info()));
    return 0;
}
