#include "pages/idcard/idc_fields.h"

#include "app/text_codec.h"

#include <cstring>

namespace {

/// A text and the number of the field that follows it.
struct Piece {
    const char *literal;
    std::size_t field;
};

constexpr Piece kPermanentResident2017[] = {
    {"类别：2017版外国人永久居住证\r\n\r\n英文姓名: ", 1},
    {"   性别: ", 2},
    {"\r\n国籍或地区代号: ", 3},
    {"   出生日期: ", 4},
    {"\r\n永久居住证号码: ", 6},
    {"\r\n签发机关: ", 7},
    {"\r\n起始日期: ", 8},
    {"    结束日期: ", 9},
    {"\r\n有效期限: ", 10},
    {"\r\n中文姓名: ", 11},
    {"\r\n证件版本号: ", 12},
};

constexpr Piece kResidentHead[] = {
    {"类别：居民身份证\r\n\r\n姓名: ", 1}, {"\r\n性别: ", 2}, {"   民族: ", 3}, {"   出生日期: ", 4}, {"\r\n住址: ", 5},
};

constexpr Piece kPlainHead[] = {
    {"\r\n姓名: ", 1},
    {"\r\n性别: ", 2},
    {"   出生日期: ", 4},
    {"\r\n住址: ", 5},
};

constexpr Piece kPermanentResident2023Head[] = {
    {"类别：2023新版永居证\r\n\r\n姓名: ", 1},
    {"\r\n性别: ", 2},
    {"   换证次数: ", 3},
    {"   出生日期: ", 4},
    {"\r\n英文姓名: ", 5},
};

constexpr Piece kValidity[] = {
    {"\r\n起始日期: ", 8},
    {"    结束日期: ", 9},
    {"\r\n有效期限: ", 10},
};

constexpr Piece kPermitTail[] = {
    {"\r\n证件版本号: ", 12},
};

constexpr Piece kPermanentResident2023Tail[] = {
    {"   国籍: ", 11},
    {"\r\n既往版本: ", 12},
    {"   旧证件号码: ", 13},
};

class Output {
public:
    explicit Output(const IdcFields &fields) : m_fields(fields), m_text{} {}

    void add(const char *text) { appendOrAbort(m_text, text); }

    template <std::size_t count>
    void add(const Piece (&pieces)[count])
    {
        for (const Piece &piece : pieces) {
            add(piece.literal);
            add(field(piece.field));
        }
    }

    const char *field(std::size_t number) const { return m_fields[number] != nullptr ? m_fields[number] : ""; }

    QByteArray text() const { return boundedText(m_text); }

private:
    const IdcFields &m_fields;
    std::array<char, kIdcOutputSize> m_text;
};

void addHead(Output &output, char kind)
{
    switch (kind) {
    case 'A':
        output.add(kResidentHead);
        break;
    case 'Y':
        output.add(kPermanentResident2023Head);
        break;
    case 'J':
        output.add("类别：港澳台居民居住证\r\n");
        [[fallthrough]];
    default:
        output.add(kPlainHead);
    }
    output.add("\r\n");
}

void addBody(Output &output)
{
    output.add("公民身份号码: ");
    output.add(output.field(6));
    output.add("\r\n签发机关: ");
    // Cards that name no authority are issued by the national one.
    const char *const authority = output.field(7);
    output.add(*authority != '\0' ? authority : "国家移民管理局");
    output.add(kValidity);
}

void addTail(Output &output, char kind)
{
    if (kind == 'J')
        output.add(kPermitTail);
    else if (kind == 'Y')
        output.add(kPermanentResident2023Tail);
    output.add("\r\n");
}

} // namespace

IdcFields splitIdcFields(char *text)
{
    IdcFields fields{};
    std::size_t count = 0;
    char *next = text;
    while (next != nullptr && count < fields.size()) {
        fields[count++] = next;
        next = count < fields.size() ? std::strchr(next, '|') : nullptr;
        if (next != nullptr)
            *next++ = '\0';
    }
    return fields;
}

QByteArray renderIdcFields(const IdcFields &fields)
{
    Output output(fields);
    const char kind = *output.field(0);
    if (kind == 'I') {
        output.add(kPermanentResident2017);
    } else {
        addHead(output, kind);
        addBody(output);
        addTail(output, kind);
    }
    return output.text();
}
