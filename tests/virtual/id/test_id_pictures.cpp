#include "drivers/virtual/cards/id_pictures.h"
#include "drivers/virtual/cards/picture_file.h"
#include "id_test_card.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <array>
#include <csignal>
#include <ctime>
#include <functional>
#include <stdexcept>

using namespace drivers::cards;
using namespace id_test;

namespace {

using Writer = void (*)(const IdCard &, const std::string &);
using Drawer = Picture (*)(const IdCard &);
constexpr Drawer kDrawers[] = {idPhoto, idFront, idBack};

IdCard named(const char *name)
{
    nlohmann::json description = residentCard();
    description["fields"]["name"] = name;
    return IdCard(description);
}

QString failure(const std::string &path, const std::vector<std::uint8_t> &content)
{
    try {
        replaceFile(path, content);
    } catch (const std::runtime_error &error) {
        return QString::fromUtf8(error.what());
    }
    return QStringLiteral("written");
}

/// A disk that is full after `bytes`, as far as this process is concerned.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    rlimit m_before{};
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// How much processor time the front side takes in a process that did `before` before it; 0 if that failed.
std::clock_t drawingTimeOfAProcess(const IdCard &card, const std::function<void()> &before)
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        return 0;
    if (fork() == 0) {
        before();
        const std::clock_t begin = std::clock();
        idFront(card);
        const std::clock_t time = std::clock() - begin;
        _exit(write(ends[1], &time, sizeof time) == sizeof time ? 0 : 1);
    }
    ::close(ends[1]);
    std::clock_t time = 0;
    const bool told = read(ends[0], &time, sizeof time) == sizeof time;
    ::close(ends[0]);
    wait(nullptr);
    return told ? time : 0;
}

} // namespace

class TestIdPictures : public QObject {
    Q_OBJECT

private slots:
    void preparedPicturesAreQuick(); // first: no font has been loaded yet
    void writtenPicturesHaveTheirSizes_data();
    void writtenPicturesHaveTheirSizes();
    void anotherNameMakesOtherPictures();
    void everyPrintedFieldShows_data();
    void everyPrintedFieldShows();
    void portraitParametersShow();
    void sameCardMakesSamePictures();
    void textIsNeverMarkup();
    void longTextsStayInTheirPlace();
    void missingAuthorityIsPrintedAsTheUsualOne();
    void missingFolderIsAnError();
    void fullDiskKeepsTheOldPicture();
    void wrongPictureIsRefused();
};

// The first front side of a process, drawn a few times by processes of their own.
void TestIdPictures::preparedPicturesAreQuick()
{
    const IdCard card(residentCard());
    std::clock_t unprepared = 0;
    std::clock_t prepared = 0;
    for (int i = 0; i < 5; ++i) {
        unprepared += drawingTimeOfAProcess(card, [] {});
        prepared += drawingTimeOfAProcess(card, prepareIdPictures);
    }
    QVERIFY2(prepared > 0 && prepared < unprepared, qPrintable(QString("%1 and %2").arg(prepared).arg(unprepared)));
}

void TestIdPictures::writtenPicturesHaveTheirSizes_data()
{
    QTest::addColumn<int>("which");
    QTest::addColumn<QSize>("size");
    QTest::newRow("photo") << 0 << QSize(102, 126);
    QTest::newRow("front") << 1 << QSize(404, 257);
    QTest::newRow("back") << 2 << QSize(404, 257);
}

void TestIdPictures::writtenPicturesHaveTheirSizes()
{
    QFETCH(int, which);
    QFETCH(QSize, size);
    constexpr Writer kWriters[] = {writeIdPhoto, writeIdFront, writeIdBack};
    QTemporaryDir folder;
    const QString path = folder.filePath("picture.jpg");
    const IdCard card(residentCard());
    kWriters[which](card, path.toStdString());
    const QImage read(path, "JPG");
    QCOMPARE(read.size(), size);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{"picture.jpg"});
    const Picture drawn = kDrawers[which](card);
    QCOMPARE(QSize(drawn.width, drawn.height), size);
    const QImage expected(drawn.rgb.data(), drawn.width, drawn.height, drawn.width * 3, QImage::Format_RGB888);
    qint64 difference = 0;
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            difference += qAbs(qGray(read.pixel(x, y)) - qGray(expected.pixel(x, y)));
    QVERIFY2(difference < qint64{3} * size.width() * size.height(), qPrintable(QString::number(difference)));
}

void TestIdPictures::anotherNameMakesOtherPictures()
{
    for (const Drawer draw : kDrawers)
        QVERIFY(draw(named("林晓岚")).rgb != draw(named("林晓兰")).rgb);
}

void TestIdPictures::everyPrintedFieldShows_data()
{
    QTest::addColumn<QString>("letter");
    QTest::addColumn<QString>("fields");
    QTest::addColumn<bool>("front");
    QTest::newRow("A front") << "A"
                             << "name sex ethnicity birth address number" << true;
    QTest::newRow("J front") << "J"
                             << "name sex birth address number" << true;
    QTest::newRow("I front") << "I"
                             << "englishName chineseName sex nationality birth number" << true;
    QTest::newRow("Y front") << "Y"
                             << "name englishName sex nationality birth number" << true;
    QTest::newRow("Z front") << "Z"
                             << "name sex birth address number" << true;
    QTest::newRow("A back") << "A"
                            << "authority from until" << false;
    QTest::newRow("J back") << "J"
                            << "authority from until permitNumber" << false;
    QTest::newRow("Y back") << "Y"
                            << "authority from until formerNumber" << false;
}

/// The ground changes with every field, so the dark pixels of the print are counted.
void TestIdPictures::everyPrintedFieldShows()
{
    QFETCH(QString, letter);
    QFETCH(QString, fields);
    QFETCH(bool, front);
    const auto inkOf = [&](const nlohmann::json &description) {
        const Picture picture = front ? idFront(IdCard(description)) : idBack(IdCard(description));
        qint64 dark = 0;
        for (int y = 0; y < picture.height; ++y) {
            // The photo changes with the name; what lies right of the rows is left out.
            for (int x = 0; x < (front && y < 200 ? 280 : picture.width); ++x) {
                const auto at = static_cast<std::size_t>(y * picture.width + x) * 3;
                dark += picture.rgb[at] < 100 && picture.rgb[at + 1] < 100 && picture.rgb[at + 2] < 100 ? 1 : 0;
            }
        }
        return dark;
    };
    const nlohmann::json empty = selfNamedCard(letter.toStdString(), {"authority"});
    for (const QString &field : fields.split(' ')) {
        nlohmann::json filled = empty;
        filled["fields"][field.toStdString()] = "永永永永永永";
        const qint64 grown = inkOf(filled) - inkOf(empty);
        QVERIFY2(grown > 60, qPrintable(field + " " + QString::number(grown)));
    }
}

void TestIdPictures::portraitParametersShow()
{
    const auto photoWith = [](const nlohmann::json &portrait) {
        nlohmann::json description = residentCard();
        description["portrait"] = portrait;
        return idPhoto(IdCard(description)).rgb;
    };
    const auto plain = photoWith({{"seed", 1}});
    QVERIFY(photoWith({{"seed", 2}}) != plain);
    QVERIFY(photoWith({{"seed", 1}, {"glasses", true}}) != plain);
    QVERIFY(photoWith({{"seed", 1}, {"longHair", true}}) != plain);
}

void TestIdPictures::sameCardMakesSamePictures()
{
    for (const Drawer draw : kDrawers)
        QVERIFY(draw(IdCard(residentCard())).rgb == draw(IdCard(residentCard())).rgb);
}

void TestIdPictures::textIsNeverMarkup()
{
    const Picture bold = idFront(named("<b>林</b>"));
    QVERIFY(bold.rgb != idFront(named("林")).rgb);
    const Picture broken = idFront(named("<span foreground='red' &amp; <"));
    QCOMPARE(broken.width, 404);
}

void TestIdPictures::longTextsStayInTheirPlace()
{
    std::string address;
    for (int i = 0; i < 150; ++i)
        address += "永";
    nlohmann::json description = selfNamedCard("A", {});
    description["fields"]["address"] = address;
    const Picture full = idFront(IdCard(description));
    description["fields"]["address"] = "";
    const Picture empty = idFront(IdCard(description));
    const auto redAt = [](const Picture &picture, int x, int y) {
        return static_cast<int>(picture.rgb[static_cast<std::size_t>(y * picture.width + x) * 3]);
    };
    int darkInside = 0;
    for (int y = 0; y < 257; ++y) {
        for (int x = 0; x < 404; ++x) {
            const bool addressArea = x >= 40 && x < 280 && y >= 100 && y < 208;
            const bool darker = redAt(full, x, y) + 90 < redAt(empty, x, y);
            darkInside += addressArea && darker ? 1 : 0;
            QVERIFY2(addressArea || !darker, qPrintable(QString("%1,%2").arg(x).arg(y)));
        }
    }
    QVERIFY2(darkInside > 500, qPrintable(QString::number(darkInside)));
}

void TestIdPictures::missingAuthorityIsPrintedAsTheUsualOne()
{
    const auto backWith = [](const char *authority) {
        nlohmann::json description = residentCard();
        description["fields"]["authority"] = authority;
        return idBack(IdCard(description)).rgb;
    };
    // The ground's fine lines differ and shine through the letters' edges.
    const auto differing = [](const std::vector<std::uint8_t> &one, const std::vector<std::uint8_t> &other) {
        int pixels = 0;
        for (std::size_t i = 0; i < one.size(); i += 3)
            pixels += (one[i] < 80) != (other[i] < 80) ? 1 : 0;
        return pixels;
    };
    const auto usual = backWith("国家移民管理局");
    QVERIFY(differing(backWith(""), usual) < 40);
    QVERIFY(differing(backWith("云杉市公安局"), usual) > 200);
}

void TestIdPictures::missingFolderIsAnError()
{
    QTemporaryDir folder;
    const std::string path = folder.filePath("missing/photo.jpg").toStdString();
    QCOMPARE(failure(path, {1}), QString::fromStdString(path + ": No such file or directory"));
    QVERIFY_EXCEPTION_THROWN(writeIdPhoto(IdCard(residentCard()), path), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(writeIdPhoto(IdCard(residentCard()), ""), std::runtime_error);
    QVERIFY(QDir(folder.path()).isEmpty());
    QVERIFY(failure(folder.path().toStdString(), {1}).startsWith(folder.path() + ": "));
    QVERIFY(QDir(folder.path()).isEmpty());
}

void TestIdPictures::fullDiskKeepsTheOldPicture()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("front.jpg");
    const IdCard card(residentCard());
    writeIdFront(card, path.toStdString());
    const QByteArray before = contentOf(path);
    QVERIFY(before.size() > 4096);
    {
        const FullDisk disk(1000);
        QVERIFY_EXCEPTION_THROWN(writeIdFront(named("别人"), path.toStdString()), std::runtime_error);
    }
    QCOMPARE(contentOf(path), before);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{"front.jpg"});
    writeIdFront(named("别人"), path.toStdString());
    QVERIFY(contentOf(path) != before);
}

void TestIdPictures::wrongPictureIsRefused()
{
    QVERIFY_EXCEPTION_THROWN(encodeJpeg(Picture{}), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(encodeJpeg(Picture{2, 2, std::vector<std::uint8_t>(11)}), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(encodeJpeg(Picture{70000, 1, std::vector<std::uint8_t>(210000)}), std::runtime_error);
    QVERIFY(encodeJpeg(Picture{2, 2, std::vector<std::uint8_t>(12)}).size() > 100);
}

QTEST_GUILESS_MAIN(TestIdPictures)
#include "test_id_pictures.moc"
