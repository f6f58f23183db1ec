#include "pages/ssse/ethnic_groups.h"
#include "pages/ssse/ssse_record.h"

#include <QStringList>
#include <QTest>

namespace {

/// The lines of a record as shown; each is ended by "\r\n".
QStringList lines(const QString &shown)
{
    QStringList list = shown.split("\r\n");
    if (list.takeLast() != "")
        qFatal("the last line is not ended");
    return list;
}

QString holderLine(const char *record, int index)
{
    return lines(holderText(record)).at(index);
}

} // namespace

class TestSsseRecord : public QObject {
    Q_OBJECT

private slots:
    void issuerFieldsStandBehindTheirLabels()
    {
        QCOMPARE(issuerText("1|2|3|4|5|6|7"), "卡的识别码: 1\r\n卡的类别: 2\r\n规范版本: 3\r\n初始化机构编号: 4\r\n"
                                              "发卡日期: 5\r\n卡有效期: 6\r\n卡号: 7\r\n");
    }

    void holderFieldsStandBehindTheirLabels()
    {
        QCOMPARE(holderText("1|2|3|2|5|6|7"),
                 "社会保障卡号码: 1\r\n姓名: 2\r\n姓名扩展: 3\r\n性别: 女\r\n民族: 维吾尔族\r\n"
                 "出生地: 6\r\n出生日期: 7\r\n");
    }

    void blanksAreKept()
    {
        QCOMPARE(lines(issuerText("|||||| A 1 ")).last(), "卡号:  A 1 ");
        QCOMPARE(lines(issuerText("  ||||||")).first(), "卡的识别码:   ");
    }

    void onlyTheBarSeparates()
    {
        QCOMPARE(lines(issuerText("a\\|b;c\t,|\"d|e\"||||")),
                 QStringList({"卡的识别码: a\\", "卡的类别: b;c\t,", "规范版本: \"d", "初始化机构编号: e\"",
                              "发卡日期: ", "卡有效期: ", "卡号: "}));
    }

    void missingFieldsAreEmpty()
    {
        QCOMPARE(issuerText("1|2"), "卡的识别码: 1\r\n卡的类别: 2\r\n规范版本: \r\n初始化机构编号: \r\n"
                                    "发卡日期: \r\n卡有效期: \r\n卡号: \r\n");
        QCOMPARE(holderText(""), "社会保障卡号码: \r\n姓名: \r\n姓名扩展: \r\n性别: 未说明\r\n民族: 其他\r\n"
                                 "出生地: \r\n出生日期: \r\n");
    }

    void fieldsAfterTheSeventhAreLeftOut_data()
    {
        QTest::addColumn<QByteArray>("record");
        QTest::newRow("eight") << QByteArray("1|2|3|4|5|6|7|8");
        QTest::newRow("ten") << QByteArray("1|2|3|4|5|6|7|8|9|10");
        QTest::newRow("eleven") << QByteArray("1|2|3|4|5|6|7|8|9|10|11");
        QTest::newRow("bars without end") << QByteArray("1|2|3|4|5|6|7") + QByteArray(1000, '|');
    }

    void fieldsAfterTheSeventhAreLeftOut()
    {
        QFETCH(QByteArray, record);
        QCOMPARE(issuerText(record), issuerText("1|2|3|4|5|6|7"));
    }

    void sexGoesByItsFirstCharacter_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QString>("word");
        QTest::newRow("1") << QByteArray("1") << "男";
        QTest::newRow("1x") << QByteArray("1x") << "男";
        QTest::newRow("2") << QByteArray("2") << "女";
        QTest::newRow("21") << QByteArray("21") << "女";
        QTest::newRow("9") << QByteArray("9") << "未说明";
        QTest::newRow("0") << QByteArray("0") << "未说明";
        QTest::newRow("empty") << QByteArray("") << "未说明";
        QTest::newRow("blank before it") << QByteArray(" 1") << "未说明";
    }

    void sexGoesByItsFirstCharacter()
    {
        QFETCH(QByteArray, field);
        QFETCH(QString, word);
        QCOMPARE(holderLine("|||" + field + "|||", 3), "性别: " + word);
    }

    void namesAreGbk()
    {
        QCOMPARE(holderLine("|\xD5\xC5\xC8\xFD|\xC0\xEE|||\xE5\x8C\x97\xE4\xBA\xAC|", 1), "姓名: 张三");
        QCOMPARE(holderLine("|\xD5\xC5\xC8\xFD|\xC0\xEE|||\xE5\x8C\x97\xE4\xBA\xAC|", 2), "姓名扩展: 李");
        QCOMPARE(holderLine("|\xD5\xC5\xC8\xFD|\xC0\xEE|||\xE5\x8C\x97\xE4\xBA\xAC|", 5), "出生地: 北京");
    }

    void nameCutInTheMiddleOfACharacterDoesNotSpoilTheRest()
    {
        const QStringList shown = lines(holderText("|\xD5\xC5\xC8||1|1||2000"));
        QVERIFY(shown.at(1).startsWith("姓名: 张"));
        QCOMPARE(shown.mid(2), QStringList({"姓名扩展: ", "性别: 男", "民族: 汉族", "出生地: ", "出生日期: 2000"}));
    }

    void invalidUtf8DoesNotSpoilTheRest()
    {
        const QStringList shown = lines(issuerText("a|\xFF\xC3|b||||z"));
        QCOMPARE(shown.size(), 7);
        QVERIFY(shown.at(1).contains(QChar::ReplacementCharacter));
        QCOMPARE(shown.at(2), "规范版本: b");
        QCOMPARE(shown.at(6), "卡号: z");
    }

    void textIsCutAt1023BytesBetweenCharacters()
    {
        const int room = 1023 - issuerText("").toUtf8().size() + 2;
        const QByteArray bars("||||||");
        QCOMPARE(issuerText(bars + QByteArray(room - 2, 'x')).toUtf8().size(), 1023);
        QVERIFY(issuerText(bars + QByteArray(room - 2, 'x')).endsWith("x\r\n"));
        QVERIFY(issuerText(bars + QByteArray(room - 1, 'x')).endsWith("x\r"));
        QVERIFY(issuerText(bars + QByteArray(room + 50, 'x')).endsWith("x"));
        QCOMPARE(issuerText(bars + QByteArray(room + 50, 'x')).toUtf8().size(), 1023);
        for (int lost = 0; lost < 3; ++lost) {
            const QString shown = issuerText(bars + QByteArray(room - 3 + lost, 'x') + "京京京");
            QCOMPARE(shown.toUtf8().size(), 1023 - (lost == 0 ? 0 : 3 - lost));
            QVERIFY(!shown.contains(QChar::ReplacementCharacter));
        }
    }

    void recordThatGrowsInDecodingIsCut()
    {
        QByteArray name;
        for (int i = 0; i < 500; ++i)
            name += "\xD5\xC5";
        const QString shown = holderText("|" + name + "|||||");
        QVERIFY(shown.toUtf8().size() <= 1023);
        QVERIFY(shown.toUtf8().size() > 1020);
        QVERIFY(shown.endsWith("张"));
    }

    void bytesThatAreNoTextAreCutAsWell() { QVERIFY(issuerText("||||||" + QByteArray(1018, '\x80')).size() <= 1023); }

    void tableHasItsEntriesInOrder()
    {
        const EthnicGroup expected[] = {
            {1, "汉族"},      {2, "蒙古族"},    {3, "回族"},        {4, "藏族"},        {5, "维吾尔族"},
            {6, "苗族"},      {7, "彝族"},      {8, "壮族"},        {9, "布依族"},      {10, "朝鲜族"},
            {11, "满族"},     {12, "侗族"},     {13, "瑶族"},       {14, "白族"},       {15, "土家族"},
            {16, "哈尼族"},   {17, "哈萨克族"}, {18, "傣族"},       {19, "黎族"},       {20, "傈傈族"},
            {21, "佤族"},     {22, "畲族"},     {23, "高山族"},     {24, "拉祜族"},     {25, "水族"},
            {26, "东乡族"},   {27, "纳西族"},   {28, "景颇族"},     {29, "柯尔克孜族"}, {30, "土族"},
            {31, "达翰尔族"}, {32, "仫佬族"},   {33, "羌族"},       {34, "布朗族"},     {35, "撒拉族"},
            {36, "毛南族"},   {37, "仡佬族"},   {38, "锡伯族"},     {39, "阿昌族"},     {40, "普米族"},
            {41, "塔吉克族"}, {42, "怒族"},     {43, "乌孜别克族"}, {44, "俄罗斯族"},   {45, "鄂温克族"},
            {46, "德昂族"},   {47, "保安族"},   {48, "裕固族"},     {49, "京族"},       {50, "塔塔尔族"},
            {51, "独龙族"},   {52, "鄂伦春族"}, {53, "赫哲族"},     {54, "门巴族"},     {55, "珞巴族"},
            {56, "基诺族"},   {99, "其他"},
        };
        QCOMPARE(kEthnicGroups.size(), std::size(expected));
        for (std::size_t i = 0; i < kEthnicGroups.size(); ++i) {
            QCOMPARE(kEthnicGroups.at(i).code, expected[i].code);
            QCOMPARE(kEthnicGroups.at(i).name, expected[i].name);
            const QByteArray code = QByteArray::number(expected[i].code);
            QCOMPARE(ethnicGroupName(code.constData()), expected[i].name);
        }
    }

    void ethnicCodeIsReadTheCWay_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QString>("name");
        QTest::newRow("01") << QByteArray("01") << "汉族";
        QTest::newRow("1") << QByteArray("1") << "汉族";
        QTest::newRow("leading blanks") << QByteArray(" \t 3") << "回族";
        QTest::newRow("plus") << QByteArray("+4") << "藏族";
        QTest::newRow("minus") << QByteArray("-1") << "其他";
        QTest::newRow("digits, then text") << QByteArray("12abc") << "侗族";
        QTest::newRow("digits, blank, digits") << QByteArray("5 6") << "维吾尔族";
        QTest::newRow("zeros") << QByteArray("0000000000000000000000000000056") << "基诺族";
        QTest::newRow("decimal, not octal") << QByteArray("010") << "朝鲜族";
        QTest::newRow("not hexadecimal") << QByteArray("0x1") << "其他";
        QTest::newRow("empty") << QByteArray("") << "其他";
        QTest::newRow("abc") << QByteArray("abc") << "其他";
        QTest::newRow("0") << QByteArray("0") << "其他";
        QTest::newRow("57") << QByteArray("57") << "其他";
        QTest::newRow("98") << QByteArray("98") << "其他";
        QTest::newRow("99") << QByteArray("99") << "其他";
        QTest::newRow("2^32 + 1 does not wrap") << QByteArray("4294967297") << "其他";
        QTest::newRow("past 64 bits") << QByteArray("18446744073709551617") << "其他";
        QTest::newRow("far below") << QByteArray("-99999999999999999999999") << "其他";
    }

    void ethnicCodeIsReadTheCWay()
    {
        QFETCH(QByteArray, field);
        QFETCH(QString, name);
        QCOMPARE(ethnicGroupName(field.constData()), name.toUtf8().constData());
        QCOMPARE(holderLine("||||" + field + "||", 4), "民族: " + name);
    }
};

QTEST_APPLESS_MAIN(TestSsseRecord)
#include "test_ssse_record.moc"
