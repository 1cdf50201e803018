<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>CommandLine</name>
    <message>
        <location filename="../app/CommandLine.cpp" line="10"/>
        <source>Selvane live video mixer. Without options the mixer window opens.</source>
        <translation>Selvane 直播视频混合器。不带选项时打开混合器窗口。</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../app/MainWindow.cpp" line="112"/>
        <source>Output Settings</source>
        <translation>输出设置</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="114"/>
        <source>Output Preview</source>
        <translation>输出预览</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="116"/>
        <source>Audio Mixer</source>
        <translation>混音器</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="118"/>
        <source>Text Overlay</source>
        <translation>文字叠加</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="120"/>
        <source>Video Overlay</source>
        <translation>视频叠加</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="122"/>
        <source>Image Playback</source>
        <translation>图片播放</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="173"/>
        <source>&amp;File</source>
        <translation>文件(&amp;F)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="174"/>
        <source>Export Drawing...</source>
        <translation>导出涂鸦...</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="175"/>
        <source>Open Output Folder</source>
        <translation>打开输出文件夹</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="176"/>
        <source>E&amp;xit</source>
        <translation>退出(&amp;X)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="177"/>
        <source>&amp;View</source>
        <translation>视图(&amp;V)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="178"/>
        <source>Drawing Tools</source>
        <translation>绘图工具</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="179"/>
        <source>Reset Workspace Layout</source>
        <translation>重置工作区布局</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="180"/>
        <source>&amp;Tools</source>
        <translation>工具(&amp;T)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="181"/>
        <source>Program Scheduling...</source>
        <translation>节目编排...</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="182"/>
        <source>Network Proxy...</source>
        <translation>网络代理...</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="183"/>
        <source>&amp;Help</source>
        <translation>帮助(&amp;H)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="184"/>
        <source>Language</source>
        <translation>语言</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="187"/>
        <location filename="../app/MainWindow.cpp" line="203"/>
        <source>About Selvane</source>
        <translation>关于 Selvane</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="198"/>
        <source>Output Folder</source>
        <translation>输出文件夹</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="198"/>
        <source>Unable to open the output folder.</source>
        <translation>无法打开输出文件夹。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="204"/>
        <source>Selvane %1
Live video mixer: four input channels, overlays, audio mixing, recording and live streaming.</source>
        <translation>Selvane %1
直播视频混合器：四路输入、叠加、混音、录制与直播推流。</translation>
    </message>
</context>
</TS>
