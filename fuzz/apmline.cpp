// The line of the power file, of any bytes: never a bad access or an overflow, and read as scanf() reads it.
#include "apmline_p.h"
#include "fuzzsupport.h"

#include <climits>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace {

bool isHexDigit(char c)
{
    return std::string_view("0123456789abcdefABCDEF").find(c) != std::string_view::npos;
}

/** scanf() overflows on long numbers, and C libraries differ about "0x" with no digit behind it. */
bool isComparable(const std::string &bytes)
{
    size_t digits = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
        digits = isHexDigit(bytes[i]) ? digits + 1 : 0;
        const bool isMark = bytes[i] == 'x' || bytes[i] == 'X';
        if (digits > 7 || (isMark && (i + 1 == bytes.size() || !isHexDigit(bytes[i + 1]))))
            return false;
    }
    return true;
}

ApmLine scan(std::string &bytes)
{
    ApmLine line;
    unsigned mains = 0xff, battery = 0xff, flag = 0xff;
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(fmemopen(bytes.data(), bytes.size(), "r"),
                                                                &std::fclose);
    require(file != nullptr);
    // NOLINTNEXTLINE(cert-err34-c): this is what the parser has to equal.
    static_cast<void>(std::fscanf(file.get(), "%*[^ ] %*d.%*d 0x%*x 0x%x 0x%x 0x%x %d%% %i %c", &mains,
                                  &battery, &flag, &line.percent, &line.time, &line.unit));
    line.mainsState = int(mains);
    line.batteryState = int(battery);
    return line;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::string bytes(reinterpret_cast<const char *>(data), size);
    const ApmLine line = ApmLine::parse({bytes.data(), qsizetype(size)});
    require(line.seconds() > INT_MIN);
    if (bytes.empty() || !isComparable(bytes))
        return 0;
    const ApmLine scanned = scan(bytes);
    require(line.mainsState == scanned.mainsState && line.batteryState == scanned.batteryState);
    require(line.percent == scanned.percent && line.time == scanned.time && line.unit == scanned.unit);
    return 0;
}
