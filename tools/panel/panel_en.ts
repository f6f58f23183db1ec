<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="zh_CN">
<context>
    <name>tray_panel::PanelWindow</name>
    <message>
        <source>另有 %1 项</source>
        <translation>and %1 more</translation>
    </message>
    <message>
        <source>虚拟读卡器</source>
        <translation>Virtual reader</translation>
    </message>
    <message>
        <source>%1(&amp;%2)</source>
        <extracomment>A slot&apos;s name and its key</extracomment>
        <translation>&amp;%2 %1</translation>
    </message>
    <message>
        <source>刷卡(&amp;S)</source>
        <translation>&amp;Swipe</translation>
    </message>
    <message>
        <source>生效中的故障</source>
        <translation>Faults in force</translation>
    </message>
    <message>
        <source>清除故障(&amp;C)</source>
        <translation>&amp;Clear faults</translation>
    </message>
    <message>
        <source>蜂鸣：%1 次（%2 ms）</source>
        <translation>Beeps: %1 (%2 ms)</translation>
    </message>
    <message>
        <source>刷卡：%1 次</source>
        <translation>Swipes: %1</translation>
    </message>
    <message>
        <source>磁条：键盘模式</source>
        <translation>Stripe: keyboard mode</translation>
    </message>
    <message>
        <source>磁条：命令模式</source>
        <translation>Stripe: command mode</translation>
    </message>
</context>
<context>
    <name>tray_panel::SlotTile</name>
    <message>
        <source>（空）</source>
        <translation>(empty)</translation>
    </message>
    <message>
        <source>取出(&amp;T)</source>
        <translation>&amp;Take out</translation>
    </message>
    <message>
        <source>（无法读取）</source>
        <translation>(cannot be read)</translation>
    </message>
</context>
<context>
    <name>tray_panel::Texts</name>
    <message>
        <source>接触卡槽</source>
        <translation>Contact slot</translation>
    </message>
    <message>
        <source>非接感应区</source>
        <translation>Antenna</translation>
    </message>
    <message>
        <source>PSAM卡座1</source>
        <translation>PSAM 1</translation>
    </message>
    <message>
        <source>PSAM卡座2</source>
        <translation>PSAM 2</translation>
    </message>
    <message>
        <source>PSAM卡座3</source>
        <translation>PSAM 3</translation>
    </message>
    <message>
        <source>PSAM卡座4</source>
        <translation>PSAM 4</translation>
    </message>
    <message>
        <source>身份证区</source>
        <translation>ID plate</translation>
    </message>
    <message>
        <source>磁条刷槽</source>
        <translation>Stripe</translation>
    </message>
    <message>
        <source>%1 返回 %2</source>
        <translation>%1 returns %2</translation>
    </message>
    <message>
        <source>%1 延迟 %2 毫秒</source>
        <translation>%1 takes %2 ms longer</translation>
    </message>
    <message>
        <source>%1：卡被拔出</source>
        <translation>%1: the card goes</translation>
    </message>
    <message>
        <source>%1 最多应答 %2 字节</source>
        <translation>%1 replies with %2 bytes at most</translation>
    </message>
    <message>
        <source>%1 应答的第 %2 字节异或 %3</source>
        <translation>%1 replies with byte %2 XOR %3</translation>
    </message>
    <message>
        <source>读卡器被拔出</source>
        <translation>the reader is unplugged</translation>
    </message>
    <message>
        <source>（自第 %1 次起）</source>
        <translation> (from %1)</translation>
    </message>
    <message>
        <source>（自第 %1 次起，共 %2 次；已结束）</source>
        <translation> (from %1, times: %2; spent)</translation>
    </message>
    <message>
        <source>（自第 %1 次起，共 %2 次）</source>
        <translation> (from %1, times: %2)</translation>
    </message>
    <message>
        <source>zh</source>
        <extracomment>The language of the titles: the member of a card&apos;s &quot;title&quot; to show</extracomment>
        <translation>en</translation>
    </message>
</context>
</TS>
