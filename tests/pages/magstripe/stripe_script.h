// What the tests of the stripe page share: expected lines and calls, scripts of a swipe, the track rows.
#pragma once

#include "pages/magstripe/form_mag_stripe.h"
#include "tests/support/bench.h"

#include <QCheckBox>

#include <climits>
#include <cstring>

inline const QString kSeparator = Bench::separator("磁条卡");
inline const QString kNotOpen = "[磁条卡] 设备未打开！";
inline const QString kGet = "vek_msr_qm_get(1A2B, char[256], char[256], char[256], &0, &0, &0)";

inline QString timeoutWarning(const QString &seconds)
{
    return QString("[磁条卡] 超时时间设置不合理！将使用全局超时设定 %1秒").arg(seconds);
}

/// A script of vek_msr_qm_get that gives the tracks and their true lengths.
inline auto swipe(const char *text1, const char *text2, const char *text3)
{
    return [=](auto, char *track1, char *track2, char *track3, int *length1, int *length2, int *length3) {
        *length1 = static_cast<int>(std::strlen(std::strcpy(track1, text1)));
        *length2 = static_cast<int>(std::strlen(std::strcpy(track2, text2)));
        *length3 = static_cast<int>(std::strlen(std::strcpy(track3, text3)));
        return 0;
    };
}

/// One that writes into the buffers and fails all the same.
inline auto failedSwipe(int result)
{
    return [=](auto, char *track1, char *track2, char *track3, auto, auto, auto) {
        for (char *track : {track1, track2, track3})
            std::strcpy(track, "not to be shown");
        return result;
    };
}

inline QLineEdit *trackEdit(Bench &bench, int number)
{
    return bench.widget<QLineEdit>(qPrintable(QString("lineEdit_msr_track_%1").arg(number)),
                                   bench.window.findChild<Form_Mag_Stripe *>());
}

inline QStringList trackTexts(Bench &bench)
{
    return {trackEdit(bench, 1)->text(), trackEdit(bench, 2)->text(), trackEdit(bench, 3)->text()};
}

inline void fillTracks(Bench &bench, const QString &text1, const QString &text2, const QString &text3)
{
    trackEdit(bench, 1)->setText(text1);
    trackEdit(bench, 2)->setText(text2);
    trackEdit(bench, 3)->setText(text3);
}

/// Checks the tracks whose digits are named, for example "13", and no other.
inline void checkTracks(Bench &bench, const QString &digits)
{
    auto *const page = bench.window.findChild<Form_Mag_Stripe *>();
    for (const char *number : {"1", "2", "3"})
        bench.widget<QCheckBox>(qPrintable(QString("checkBox_%1").arg(number)), page)
            ->setChecked(digits.contains(number));
}
