#include "tools/panel/texts.h"

#include "drivers/virtual/reader/card_models.h"

#include <QCoreApplication>

namespace tray_panel {

using drivers::tray::Fault;
using drivers::tray::FaultKind;
using drivers::tray::Slot;

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(tray_panel::Texts)
};

QString effectText(const Fault &fault)
{
    const QString call = QString::fromStdString(fault.call);
    const QString value = QString::number(fault.value);
    switch (fault.kind) {
    case FaultKind::Code:
        return Texts::tr("%1 返回 %2").arg(call, value);
    case FaultKind::Delay:
        return Texts::tr("%1 延迟 %2 毫秒").arg(call, value);
    case FaultKind::Removed: {
        const auto slot = drivers::tray::slotOfName(fault.slot);
        return Texts::tr("%1：卡被拔出").arg(slot ? slotLabel(*slot) : QString::fromStdString(fault.slot));
    }
    case FaultKind::Short:
        return Texts::tr("%1 最多应答 %2 字节").arg(call, value);
    case FaultKind::Flipped:
        return Texts::tr("%1 应答的第 %2 字节异或 %3").arg(call, value, QString::asprintf("%02X", fault.mask));
    case FaultKind::Unplugged:
        break;
    }
    return Texts::tr("读卡器被拔出");
}

/// Empty for a fault that strikes always.
QString timesText(const Fault &fault)
{
    if (fault.from == 1 && fault.times == 0)
        return {};
    if (fault.times == 0)
        return Texts::tr("（自第 %1 次起）").arg(fault.from);
    const QString text =
        fault.spent() ? Texts::tr("（自第 %1 次起，共 %2 次；已结束）") : Texts::tr("（自第 %1 次起，共 %2 次）");
    return text.arg(fault.from).arg(fault.times);
}

} // namespace

QString slotLabel(Slot slot)
{
    switch (slot) {
    case Slot::Contact:
        return Texts::tr("接触卡槽");
    case Slot::Antenna:
        return Texts::tr("非接感应区");
    case Slot::Psam1:
        return Texts::tr("PSAM卡座1");
    case Slot::Psam2:
        return Texts::tr("PSAM卡座2");
    case Slot::Psam3:
        return Texts::tr("PSAM卡座3");
    case Slot::Psam4:
        return Texts::tr("PSAM卡座4");
    case Slot::IdPlate:
        return Texts::tr("身份证区");
    case Slot::Stripe:
        break;
    }
    return Texts::tr("磁条刷槽");
}

QString faultText(const Fault &fault)
{
    return effectText(fault) + timesText(fault);
}

QString cardTitle(const nlohmann::json &card)
{
    //: The language of the titles: the member of a card's "title" to show
    const QString language = Texts::tr("zh");
    return QString::fromStdString(drivers::reader::cardLabel(card, language.toStdString()));
}

} // namespace tray_panel
