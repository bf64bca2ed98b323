#include "common/test_util.h"

namespace vde::test {

Bytes& Bytes::u8(uint8_t v) {
    FData.push_back(v);
    return *this;
}

Bytes& Bytes::u16(uint16_t v) {
    FData.push_back(uint8_t(v & 0xFF));
    FData.push_back(uint8_t(v >> 8));
    return *this;
}

Bytes& Bytes::i32(int32_t v) {
    const auto u = static_cast<uint32_t>(v);
    for (int i = 0; i < 4; ++i)
        FData.push_back(uint8_t((u >> (8 * i)) & 0xFF));
    return *this;
}

Bytes& Bytes::str(const QString& s) {
    i32(int32_t(s.size()));
    for (QChar c : s)
        u16(c.unicode());
    return *this;
}

Bytes& Bytes::raw(std::initializer_list<uint8_t> b) {
    FData.insert(FData.end(), b.begin(), b.end());
    return *this;
}

TColor PixelColor(const QImage& img, int x, int y) {
    return FromQColor(img.pixelColor(x, y));
}

QImage WhiteImage(int w, int h) {
    QImage img(w, h, QImage::Format_ARGB32);
    img.fill(Qt::white);
    return img;
}

QString HexDump(const std::vector<uint8_t>& bytes) {
    QString s;
    for (uint8_t b : bytes)
        s += QStringLiteral("%1 ").arg(b, 2, 16, QLatin1Char('0'));
    return s.trimmed();
}

} // namespace vde::test
