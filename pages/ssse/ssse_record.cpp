#include "pages/ssse/ssse_record.h"

#include "app/text_codec.h"
#include "pages/ssse/ethnic_groups.h"

#include <array>

namespace {

constexpr int kShownSize = 1024; // bytes, with a closing NUL

/// Cards may send more than the seven fields that are shown; what follows the tenth is dropped.
constexpr std::size_t kMaxFields = 10;
constexpr std::size_t kShownFields = 7;

using Fields = std::array<QByteArray, kMaxFields>;
using Labels = std::array<const char *, kShownFields>;

constexpr Labels kIssuerLabels{
    "卡的识别码: ", "卡的类别: ", "规范版本: ", "初始化机构编号: ", "发卡日期: ", "卡有效期: ", "卡号: ",
};

constexpr Labels kHolderLabels{
    "社会保障卡号码: ", "姓名: ", "姓名扩展: ", "性别: ", "民族: ", "出生地: ", "出生日期: ",
};

// Places in the holder's record.
constexpr std::size_t kName = 1;
constexpr std::size_t kNameExtension = 2;
constexpr std::size_t kSex = 3;
constexpr std::size_t kEthnicGroup = 4;

Fields splitFields(const QByteArray &record)
{
    Fields fields;
    int start = 0;
    for (QByteArray &field : fields) {
        const int bar = record.indexOf('|', start);
        if (bar < 0) {
            field = record.mid(start);
            break;
        }
        field = record.mid(start, bar - start);
        start = bar + 1;
    }
    return fields;
}

const char *sexWord(const QByteArray &code)
{
    if (code.startsWith('1'))
        return "男";
    if (code.startsWith('2'))
        return "女";
    return "未说明";
}

bool continuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Cuts UTF-8 text to what fits a buffer of kShownSize. A character has at most three continuation bytes; more of them
/// in a row are no text, and any place will do.
void truncateToFit(QByteArray &text)
{
    if (text.size() < kShownSize)
        return;
    int end = kShownSize - 1;
    for (int step = 0; step < 3 && continuesCharacter(text.at(end)); ++step)
        --end;
    text.truncate(end);
}

QString shownText(const Labels &labels, const Fields &fields)
{
    QByteArray text;
    for (std::size_t i = 0; i < kShownFields; ++i)
        text += labels.at(i) + fields.at(i) + "\r\n";
    truncateToFit(text);
    return QString::fromUtf8(text);
}

} // namespace

QString issuerText(const QByteArray &record)
{
    return shownText(kIssuerLabels, splitFields(record));
}

QString holderText(const QByteArray &record)
{
    Fields fields = splitFields(record);
    for (const std::size_t gbk : {kName, kNameExtension})
        fields.at(gbk) = gbkToText(fields.at(gbk)).toUtf8();
    fields.at(kSex) = sexWord(fields.at(kSex));
    fields.at(kEthnicGroup) = ethnicGroupName(fields.at(kEthnicGroup).constData());
    return shownText(kHolderLabels, fields);
}
