<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="zh_CN">
<context>
    <name>tray_panel::PanelWindow</name>
    <message>
        <source>虚拟读卡器</source>
        <translation>Virtual reader</translation>
    </message>
    <message>
        <source>接触卡槽(&amp;1)</source>
        <translation>&amp;1 Contact slot</translation>
    </message>
    <message>
        <source>非接感应区(&amp;2)</source>
        <translation>&amp;2 Antenna</translation>
    </message>
    <message>
        <source>PSAM卡座1(&amp;3)</source>
        <translation>&amp;3 PSAM 1</translation>
    </message>
    <message>
        <source>PSAM卡座2(&amp;4)</source>
        <translation>&amp;4 PSAM 2</translation>
    </message>
    <message>
        <source>PSAM卡座3(&amp;5)</source>
        <translation>&amp;5 PSAM 3</translation>
    </message>
    <message>
        <source>PSAM卡座4(&amp;6)</source>
        <translation>&amp;6 PSAM 4</translation>
    </message>
    <message>
        <source>身份证区(&amp;7)</source>
        <translation>&amp;7 ID plate</translation>
    </message>
    <message>
        <source>磁条刷槽(&amp;8)</source>
        <translation>&amp;8 Stripe</translation>
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
</TS>
