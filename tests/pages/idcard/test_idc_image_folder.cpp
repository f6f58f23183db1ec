#include "pages/idcard/form_idcard.h"
#include "tests/support/bench.h"
#include "tests/support/death.h"

#include <QDir>

#include <sys/stat.h>

namespace {

/// HOME for the lifetime of the object.
class Home {
public:
    explicit Home(const QString &path) : m_before(qgetenv("HOME")) { qputenv("HOME", path.toLocal8Bit()); }
    ~Home() { qputenv("HOME", m_before); }
    Home(const Home &) = delete;
    Home &operator=(const Home &) = delete;

private:
    QByteArray m_before;
};

unsigned permissionBits(const QString &path)
{
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        return 0;
    return status.st_mode & 0777U;
}

} // namespace

class TestIdcImageFolder : public QObject {
    Q_OBJECT

private slots:
    void imageFolderIsMadeWithItsParentsForItsOwnerAlone()
    {
        const QString top = QDir::homePath() + "/made";
        QVERIFY(QDir(top).removeRecursively());
        const Home home(top + "/some/家");
        const QString folder = top + "/some/家/vek_idcard_images";
        {
            Bench bench;
            QCOMPARE(bench.widget<QLineEdit>("lineEdit_temp_dir")->text(), folder);
            QCOMPARE(permissionBits(folder), 0700U);
        }
        QVERIFY(!QFile::exists(folder));
        QVERIFY(QDir(top).removeRecursively());
    }

    void imageFolderThatWasThereIsClosedToOthersAndRemoved()
    {
        const QString folder = QDir::homePath() + "/vek_idcard_images";
        QVERIFY(QDir().mkpath(folder + "/deep"));
        QFile left(folder + "/deep/left.jpg");
        QVERIFY(left.open(QIODevice::WriteOnly));
        QCOMPARE(chmod(folder.toUtf8().constData(), 0755), 0);
        {
            DeviceContext device{};
            const Form_Idcard page(&device, nullptr);
            QCOMPARE(permissionBits(folder), 0700U);
            QVERIFY(left.exists());
        }
        QVERIFY(!QFile::exists(folder));
    }

    void imageFolderThatCannotBeMadeIsNoError()
    {
        const QString file = QDir::homePath() + "/file";
        QFile obstacle(file);
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        const Home home(file);
        {
            Bench bench;
            QCOMPARE(bench.widget<QLineEdit>("lineEdit_temp_dir")->text(), file + "/vek_idcard_images");
            QVERIFY(bench.log().isEmpty());
        }
        QVERIFY(obstacle.remove());
    }

    void pathsPastTheirBuffersEndTheProgram()
    {
        // "/vek_idcard_images" and "/photo.jpg" with the NUL take 29 of the 256 bytes.
        const int longest = 256 - 29;
        const QString top = QDir::homePath() + "/long/";
        for (const bool fits : {true, false}) {
            const QString home = top + QString(longest + (fits ? 0 : 1) - top.toUtf8().size(), 'x');
            const bool aborted = aborts([home] {
                const Home changed(home);
                DeviceContext device{};
                Form_Idcard page(&device, nullptr);
                page.findChild<QAbstractButton *>("pushButton_read_idc")->click();
            });
            QCOMPARE(aborted, !fits);
            QVERIFY(QDir(top).removeRecursively());
        }
    }
};

QTEST_MAIN(TestIdcImageFolder)
#include "test_idc_image_folder.moc"
