// The manual page of unifold-tray against the program's own help: the same commands and options, and the exit codes.
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

namespace {

QString manual()
{
    QFile file(UNIFOLD_TRAY_MANUAL);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("the manual page cannot be read");
    // Without the marks of fonts and the protected hyphens.
    return QString::fromUtf8(file.readAll()).replace("\\-", "-").remove(QRegularExpression("\\\\f[BIR]|\""));
}

QString help(const QStringList &command)
{
    QProcess tool;
    tool.start(UNIFOLD_TRAY_TOOL, QStringList(command) << "--help");
    if (!tool.waitForFinished() || tool.exitCode() != 0)
        qFatal("no help of %s", qPrintable(command.join(' ')));
    return QString::fromUtf8(tool.readAllStandardOutput());
}

QSet<QString> found(const QString &text, const char *pattern)
{
    QSet<QString> words;
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    for (auto match = expression.globalMatch(text); match.hasNext();)
        words << match.next().captured(1);
    return words;
}

/// The commands that a help text lists.
QStringList commandsIn(const QString &text)
{
    return found(text.section("Subcommands:", 1).section("\n\n", 0, 0), "^  (\\w+) ").values();
}

/// Every command with the words in front of it, the program itself first.
QList<QStringList> allCommands()
{
    QList<QStringList> all{{}};
    for (int i = 0; i < all.size(); ++i)
        for (const QString &name : commandsIn(help(all[i])))
            all << (QStringList(all[i]) << name);
    return all;
}

} // namespace

class TestTrayManual : public QObject {
    Q_OBJECT

private slots:
    void tellsEveryCommand()
    {
        const QString page = manual().section(".SH COMMANDS", 1).section(".SH OPTIONS", 0, 0);
        const QList<QStringList> commands = allCommands();
        QVERIFY2(commands.size() > 15, qPrintable(QString::number(commands.size())));
        for (const QStringList &command : commands) {
            if (!commandsIn(help(command)).isEmpty())
                continue;
            const QRegularExpression entry("^\\.BI? " + QRegularExpression::escape(command.join(' ')) + "\\b",
                                           QRegularExpression::MultilineOption);
            const QRegularExpression optional("^\\.BR " + command.join(' ') + "\\b",
                                              QRegularExpression::MultilineOption);
            QVERIFY2(page.contains(entry) || page.contains(optional), qPrintable(command.join(' ')));
        }
    }

    void tellsEveryOptionAndNoOther()
    {
        QSet<QString> offered;
        for (const QStringList &command : allCommands())
            offered += found(help(command).section("Options:", 1).section("Subcommands:", 0, 0), "(--[a-z]+)");
        const QSet<QString> told = found(manual(), "(?<![a-z-])(--[a-z]+)");
        QCOMPARE(told - offered, QSet<QString>());
        QCOMPARE(offered - told, QSet<QString>());
    }

    void tellsTheExitCodes()
    {
        const QString codes = manual().section(".SH EXIT STATUS", 1).section("\n.SH ", 0, 0);
        const QString told = help({}).section("Exit code: ", 1);
        for (const char *code : {"0", "1", "2"}) {
            QVERIFY2(codes.contains(QString("\n.B %1\n").arg(code)), code);
            QVERIFY2(told.contains(QRegularExpression(QString("\\b%1 ").arg(code))), code);
        }
        QCOMPARE(codes.count("\n.B "), 3);
    }
};

QTEST_GUILESS_MAIN(TestTrayManual)
#include "test_tray_manual.moc"
