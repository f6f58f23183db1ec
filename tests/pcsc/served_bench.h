// The bench over one of our own libraries, for tests that compare what it logs with what others see.
#pragma once

#include "drivers/virtual/tray/tray.h"
#include "pages/cpucard/form_cpu_iccard.h"
#include "tests/support/bench.h"

#include <QByteArrayList>
#include <QComboBox>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextEdit>

namespace testsupport {

constexpr char kPcscLibrary[] = "libtarvozent.so";
constexpr char kVirtualLibrary[] = "libtarvovek.so";

/// A tray as it is first laid out; its path.
inline QString freshTray(const QTemporaryDir &folder)
{
    QString path = folder.filePath("tray");
    const drivers::tray::Tray laidOut(path.toStdString());
    return path;
}

/// The bench with one of our libraries, chosen and loaded as a person does it, and a PC/SC reader opened from its list.
class OpenBench : public Bench {
public:
    OpenBench(const char *library, const QString &reader)
    {
        window.show();
        widget<QComboBox>("comboBox_select_driver")->setCurrentText(library);
        press("pushButton_select_driver");
        press("radioButton_pcsc");
        press("pushButton_enum_select");
        auto *const devices = widget<QComboBox>("comboBox_select_device");
        devices->setCurrentIndex(devices->findText(reader, Qt::MatchContains));
        press("pushButton_open_select");
        clearLog();
    }

    /// Powers the card on, sends the APDUs and powers the card off, on the IC card page. The answer to reset and the
    /// replies as they stand in the log; an empty text for what failed.
    QByteArrayList readCard(const QByteArrayList &commands)
    {
        auto *const cpu = page<Form_CPU_Iccard>();
        QByteArrayList answers;
        clearLog();
        press("pushButton_cpucard_poweron", cpu);
        answers << bracketed("ATR = ");
        for (const QByteArray &command : commands) {
            type("lineEdit_apdu", QString::fromLatin1(command), cpu);
            clearLog();
            press("pushButton_cpucard_apdu", cpu);
            answers << bracketed("recv RPDU=");
        }
        press("pushButton_cpucard_poweroff", cpu);
        return answers;
    }

private:
    // What stands in brackets behind `label` in the log's last line.
    QByteArray bracketed(const QString &label)
    {
        const QRegularExpression form(QRegularExpression::escape(label) + "\\[([0-9A-F]*)\\]$");
        const QStringList lines = log();
        return lines.isEmpty() ? QByteArray() : form.match(lines.last()).captured(1).toLatin1();
    }
};

} // namespace testsupport
