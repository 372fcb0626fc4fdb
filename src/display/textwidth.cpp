#include "display/textwidth.h"

namespace quendle {

namespace {

struct Weight {
    char16_t c;
    float w;
};

// Only the first 21 rows of each table are consulted; the rows stored after them never
// count and are left out. "l" is listed twice, so it weighs both rows.
constexpr Weight kIntTable[21] = {
    {u'l', 0.535f}, {u'f', 0.535f}, {u't', 0.535f}, {u':', 0.535f}, {u',', 0.535f}, {u'i', 0.431f},
    {u'j', 0.431f}, {u'l', 0.431f}, {u'r', 0.65f},  {u'J', 0.972f}, {u'c', 0.972f}, {u'k', 0.972f},
    {u's', 0.972f}, {u'v', 0.972f}, {u'x', 0.972f}, {u'y', 0.972f}, {u'z', 0.972f}, {u'A', 1.25f},
    {u'B', 1.25f},  {u'W', 1.25f},  {u'E', 1.25f},
};

// The same with "s" in front, which pushes "E" out of the consulted rows.
constexpr Weight kFloatTable[21] = {
    {u's', 0.735f}, {u'l', 0.535f}, {u'f', 0.535f}, {u't', 0.535f}, {u':', 0.535f}, {u',', 0.535f},
    {u'i', 0.431f}, {u'j', 0.431f}, {u'l', 0.431f}, {u'r', 0.65f},  {u'J', 0.972f}, {u'c', 0.972f},
    {u'k', 0.972f}, {u's', 0.972f}, {u'v', 0.972f}, {u'x', 0.972f}, {u'y', 0.972f}, {u'z', 0.972f},
    {u'A', 1.25f},  {u'B', 1.25f},  {u'W', 1.25f},
};

float total(const QString& text, const Weight (&table)[21])
{
    float sum = 0;
    for (const QChar ch : text) {
        float w = 1.09f;
        for (const Weight& row : table)
            if (ch.unicode() == row.c)
                w += row.w;
        sum += w;
    }
    return sum;
}

} // namespace

int scoremystr(const QString& text)
{
    return static_cast<int>(total(text, kIntTable) * 1.2f);
}

float scoremystrfloat(const QString& text) { return total(text, kFloatTable); }

QString givestranevenscore(const QString& text, int target)
{
    const float w = scoremystrfloat(text);
    QString out = text;
    for (int k = 0; (static_cast<float>(target) - w) > static_cast<float>(k); ++k)
        out += QLatin1Char(' ');
    return out;
}

} // namespace quendle
