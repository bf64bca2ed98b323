#pragma once
// Helpers shared by the tests: byte builders for golden records, image pixel access.

#include "velDiagEdit/platform/colors.h"
#include "velDiagEdit/platform/streams.h"

#include <QImage>
#include <QString>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace vde::test {

// Builds little-endian byte sequences by hand for golden-byte tests.
class Bytes {
public:
    Bytes& u8(uint8_t v);
    Bytes& i32(int32_t v);
    Bytes& u16(uint16_t v);
    Bytes& str(const QString& s); // Int count + UTF-16LE units
    Bytes& raw(std::initializer_list<uint8_t> b);
    const std::vector<uint8_t>& data() const { return FData; }
    size_t size() const { return FData.size(); }

private:
    std::vector<uint8_t> FData;
};

// The RGB colour value ($00BBGGRR) of a pixel.
TColor PixelColor(const QImage& img, int x, int y);

// A white ARGB image of the given size.
QImage WhiteImage(int w, int h);

QString HexDump(const std::vector<uint8_t>& bytes);

} // namespace vde::test
