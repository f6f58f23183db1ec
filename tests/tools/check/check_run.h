// One run of unifold-driver-check, and its JSON document.
#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QStringList>

namespace check_test {

struct CheckRun {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
    QMap<QString, QString> verdicts; ///< by check; only with --json
    QMap<QString, QString> reasons;

    /// The names of the checks with a verdict.
    QStringList with(const QString &verdict) const { return verdicts.keys(verdict); }

    /// "check: reason" of all failures, for the message of a test.
    QString failures() const
    {
        QStringList lines;
        for (const QString &check : with("fail"))
            lines << check + ": " + reasons[check];
        return lines.join('\n');
    }
};

inline CheckRun runCheck(const QStringList &arguments)
{
    CheckRun run;
    QProcess tool;
    tool.start(UNIFOLD_CHECK_TOOL, arguments);
    if (!tool.waitForFinished(240000) || tool.exitStatus() != QProcess::NormalExit)
        return run;
    run.exitCode = tool.exitCode();
    run.output = tool.readAllStandardOutput();
    run.errors = tool.readAllStandardError();
    const QJsonArray checks = QJsonDocument::fromJson(run.output).object()["checks"].toArray();
    for (const auto &entry : checks) {
        const QJsonObject check = entry.toObject();
        run.verdicts[check["check"].toString()] = check["verdict"].toString();
        run.reasons[check["check"].toString()] = check["reason"].toString();
    }
    return run;
}

} // namespace check_test
