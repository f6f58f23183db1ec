#include "pages/idcard/idc_fields.h"
#include "tests/support/death.h"

#include <QStringList>
#include <QTest>

namespace {

// The layouts, written out: <n> stands for field n.
const char kLayoutI[] =
    "类别：2017版外国人永久居住证\r\n\r\n英文姓名: <1>   性别: <2>\r\n国籍或地区代号: <3>   出生日期: "
    "<4>\r\n永久居住证号码: <6>\r\n签发机关: <7>\r\n起始日期: <8>    结束日期: <9>\r\n有效期限: "
    "<10>\r\n中文姓名: <11>\r\n证件版本号: <12>";
const char kLayoutA[] = "类别：居民身份证\r\n\r\n姓名: <1>\r\n性别: <2>   民族: <3>   出生日期: <4>\r\n住址: "
                        "<5>\r\n公民身份号码: <6>\r\n签发机关: <7>\r\n起始日期: <8>    结束日期: <9>\r\n有效期限: "
                        "<10>\r\n";
const char kLayoutJ[] = "类别：港澳台居民居住证\r\n\r\n姓名: <1>\r\n性别: <2>   出生日期: <4>\r\n住址: "
                        "<5>\r\n公民身份号码: <6>\r\n签发机关: <7>\r\n起始日期: <8>    结束日期: <9>\r\n有效期限: "
                        "<10>\r\n证件版本号: <12>\r\n";
const char kLayoutY[] = "类别：2023新版永居证\r\n\r\n姓名: <1>\r\n性别: <2>   换证次数: <3>   出生日期: "
                        "<4>\r\n英文姓名: <5>\r\n公民身份号码: <6>\r\n签发机关: <7>\r\n起始日期: <8>    结束日期: "
                        "<9>\r\n有效期限: <10>   国籍: <11>\r\n既往版本: <12>   旧证件号码: <13>\r\n";
const char kLayoutOther[] = "\r\n姓名: <1>\r\n性别: <2>   出生日期: <4>\r\n住址: <5>\r\n公民身份号码: "
                            "<6>\r\n签发机关: <7>\r\n起始日期: <8>    结束日期: <9>\r\n有效期限: <10>\r\n";

QByteArray rendered(QByteArray info)
{
    return renderIdcFields(splitIdcFields(info.data()));
}

/// The layout with the fields put in by a way other than the code's own.
QByteArray filled(const char *layout, QStringList fields, bool authorityHasDefault)
{
    while (fields.size() < 14)
        fields << "";
    if (authorityHasDefault && fields[7].isEmpty())
        fields[7] = "国家移民管理局";
    QString text = layout;
    for (int i = 0; i < fields.size(); ++i)
        text.replace(QString("<%1>").arg(i), fields[i]);
    return text.toUtf8();
}

QStringList numberedFields(const QString &kind, int count)
{
    QStringList fields;
    for (int i = 0; i < count; ++i)
        fields << (i == 0 ? kind : QString("字段%1").arg(i));
    return fields;
}

} // namespace

class TestIdcFields : public QObject {
    Q_OBJECT

private slots:
    void splitPointsBehindEachBarAndLeavesTheRestNull()
    {
        char text[] = "A||x|";
        const IdcFields fields = splitIdcFields(text);
        QCOMPARE(fields[0], "A");
        QCOMPARE(fields[1], "");
        QCOMPARE(fields[2], "x");
        QCOMPARE(fields[3], "");
        for (std::size_t i = 4; i < fields.size(); ++i)
            QVERIFY(fields[i] == nullptr);
    }

    void splitOfAnEmptyTextIsOneEmptyField()
    {
        char text[] = "";
        const IdcFields fields = splitIdcFields(text);
        QVERIFY(fields[0] == text);
        QVERIFY(fields[1] == nullptr);
    }

    void splitStopsAtTwentyFields()
    {
        QByteArray text = numberedFields("A", 40).join('|').toUtf8();
        const IdcFields fields = splitIdcFields(text.data());
        QCOMPARE(fields.size(), std::size_t{20});
        QCOMPARE(QString(fields[18]), "字段18");
        QVERIFY(QString(fields[19]).startsWith("字段19"));
    }

    void otherSeparatorsSplitNothing()
    {
        char text[] = "A#1#2";
        const IdcFields fields = splitIdcFields(text);
        QCOMPARE(fields[0], "A#1#2");
        QVERIFY(fields[1] == nullptr);
    }

    void everyKindWithAnyNumberOfFields_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("layout");
        QTest::newRow("I, permanent residence card of 2017") << "I" << QByteArray(kLayoutI);
        QTest::newRow("A, resident ID card") << "A" << QByteArray(kLayoutA);
        QTest::newRow("J, residence permit") << "J" << QByteArray(kLayoutJ);
        QTest::newRow("Y, permanent residence card of 2023") << "Y" << QByteArray(kLayoutY);
        QTest::newRow("another letter") << "Z" << QByteArray(kLayoutOther);
        QTest::newRow("a small letter") << "a" << QByteArray(kLayoutOther);
        QTest::newRow("a blank before the letter") << " A" << QByteArray(kLayoutOther);
        QTest::newRow("no letter") << "" << QByteArray(kLayoutOther);
        QTest::newRow("only the first letter counts") << "Jade" << QByteArray(kLayoutJ);
        QTest::newRow("Chinese") << "证" << QByteArray(kLayoutOther);
    }

    void everyKindWithAnyNumberOfFields()
    {
        QFETCH(QString, kind);
        QFETCH(QByteArray, layout);
        for (int count = 0; count <= 40; ++count) {
            const QStringList fields = numberedFields(kind, count);
            // No fields at all means no kind either.
            const QByteArray expected =
                filled(count == 0 ? kLayoutOther : layout.constData(), fields, count == 0 || !kind.startsWith('I'));
            QCOMPARE(rendered(fields.join('|').toUtf8()), expected);
        }
    }

    void emptyAuthorityIsTheNationalOne_data()
    {
        QTest::addColumn<QByteArray>("info");
        QTest::addColumn<bool>("national");
        QTest::newRow("A") << QByteArray("A|n|s|e|b|a|id||from|to") << true;
        QTest::newRow("J") << QByteArray("J|n|s|e|b|a|id||from|to") << true;
        QTest::newRow("Y") << QByteArray("Y|n|s|e|b|a|id||from|to") << true;
        QTest::newRow("another letter") << QByteArray("?|n|s|e|b|a|id||from|to") << true;
        QTest::newRow("missing instead of empty") << QByteArray("A|n|s|e|b|a|id") << true;
        QTest::newRow("a blank is not empty") << QByteArray("A|n|s|e|b|a|id| |from|to") << false;
        QTest::newRow("I shows nothing") << QByteArray("I|n|s|e|b|a|id||from|to") << false;
    }

    void emptyAuthorityIsTheNationalOne()
    {
        QFETCH(QByteArray, info);
        QFETCH(bool, national);
        QCOMPARE(rendered(info).contains("\r\n签发机关: 国家移民管理局\r\n起始日期: "), national);
    }

    void fieldsAreNeverMarkupNorFormats() { QVERIFY(rendered("A|<b>%s%n</b>").contains("姓名: <b>%s%n</b>\r\n")); }

    void theLongestTextOfADriverFits_data()
    {
        QTest::addColumn<char>("kind");
        for (const char kind : {'I', 'A', 'J', 'Y', 'Z'})
            QTest::newRow(std::string(1, kind).c_str()) << kind;
    }

    void theLongestTextOfADriverFits()
    {
        QFETCH(char, kind);
        const QByteArray info = QByteArray(1, kind) + '|' + QByteArray(510, 'x');
        QVERIFY(rendered(info).contains("姓名: " + QByteArray(510, 'x')));
    }

    void outputPastItsBufferEndsTheProgram()
    {
        // "\r\n姓名: " to the end: what the layout itself takes with all other fields empty.
        const int frame = rendered("Z||").size();
        const int room = static_cast<int>(kIdcOutputSize) - 1 - frame;
        QCOMPARE(rendered("Z|" + QByteArray(room, 'x')).size(), 1023);
        QVERIFY(aborts([room] { rendered("Z|" + QByteArray(room + 1, 'x')); }));
    }
};

QTEST_APPLESS_MAIN(TestIdcFields)
#include "test_idc_fields.moc"
