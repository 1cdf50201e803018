<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
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
<context>
    <name>selvane</name>
    <message>
        <location filename="../app/CommandLine.cpp" line="17"/>
        <source>Selvane live video mixer. Without options the mixer window opens.</source>
        <translation>Selvane 直播视频混合器。不带选项时打开混合器窗口。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="20"/>
        <source>Run the engine without a window (no instance lock).</source>
        <translation>无窗口运行引擎（不占用单实例锁）。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="22"/>
        <source>Load a source into input channel N (1-4): a file path, a network URL, a capture address or lavfi://GRAPH. Repeatable.</source>
        <translation>为输入通道 N（1-4）加载信号源：文件路径、网络地址、采集地址或 lavfi://GRAPH。可重复。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="25"/>
        <source>Channel (1-4) that forms the program picture. Default 1.</source>
        <translation>构成节目画面的通道（1-4），默认 1。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="26"/>
        <source>Stop after this many seconds (default: until Ctrl+C).</source>
        <translation>运行指定秒数后停止（默认：直到 Ctrl+C）。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="29"/>
        <source>Preview (speaker) volume of channel N, linear, e.g. 1=0.5. Repeatable.</source>
        <translation>通道 N 的预览（扬声器）音量，线性，例如 1=0.5。可重复。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="32"/>
        <source>Volume of the program channel in the program mix, linear (default 1).</source>
        <translation>节目通道在节目混音中的音量，线性（默认 1）。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="34"/>
        <source>Program bus gain for recording and streaming, in percent (default 100).</source>
        <translation>录制与推流的节目总线增益，百分比（默认 100）。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="37"/>
        <source>Show a scrolling ticker with these words. Repeatable.</source>
        <translation>显示滚动字幕。可重复。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="39"/>
        <source>Show a picture in the rectangle x,y,w,h of the 640x360 scene. Repeatable.</source>
        <translation>在 640x360 场景的矩形 x,y,w,h 中显示图片。可重复。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="42"/>
        <source>Play a video (looping) in the rectangle x,y,w,h of the 640x360 scene. Repeatable.</source>
        <translation>在 640x360 场景的矩形 x,y,w,h 中循环播放视频。可重复。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="45"/>
        <source>Record the program to this file (MP4, MKV, MOV, TS ...).</source>
        <translation>将节目录制到此文件（MP4、MKV、MOV、TS……）。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="48"/>
        <source>Start a new recording file at a keyframe after this many minutes.</source>
        <translation>录制满指定分钟后在关键帧处开始新文件。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="50"/>
        <source>Start a new recording file at a keyframe once a file reaches this many GiB.</source>
        <translation>文件达到指定 GiB 后在关键帧处开始新文件。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="53"/>
        <source>Publish the program to this URL (rtmp://, rtmps://, srt://, udp:// ...); #FORMAT picks the container (flv, mpegts). Repeatable.</source>
        <translation>将节目推流到此地址（rtmp://、rtmps://、srt://、udp://……）；#FORMAT 指定封装格式（flv、mpegts）。可重复。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="56"/>
        <source>Output size, e.g. 1280x720 (default: same as the program).</source>
        <translation>输出尺寸，例如 1280x720（默认：与节目相同）。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="58"/>
        <source>Output frame rate: 30 or 60 (default 30).</source>
        <translation>输出帧率：30 或 60（默认 30）。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="59"/>
        <source>Video bitrate in kbit/s (default: automatic).</source>
        <translation>视频码率，kbit/s（默认：自动）。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="60"/>
        <source>Video encoder: auto, hardware or software (default auto).</source>
        <translation>视频编码器：auto、hardware 或 software（默认 auto）。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="63"/>
        <source>Quality preset: performance, balanced or quality (default balanced).</source>
        <translation>质量预设：performance、balanced 或 quality（默认 balanced）。</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="116"/>
        <source>--record expects a file path</source>
        <translation>--record 需要文件路径</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="126"/>
        <source>--%1 expects a positive number, got &quot;%2&quot;</source>
        <translation>--%1 需要正数，收到 &quot;%2&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="136"/>
        <source>segment limits need --record</source>
        <translation>分段限制需要 --record</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="145"/>
        <source>--stream expects a URL such as rtmp://host/app/key, got &quot;%1&quot;</source>
        <translation>--stream 需要类似 rtmp://host/app/key 的地址，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="157"/>
        <source>--size expects WIDTHxHEIGHT, got &quot;%1&quot;</source>
        <translation>--size 需要 宽x高，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="165"/>
        <source>--fps expects 30 or 60, got &quot;%1&quot;</source>
        <translation>--fps 需要 30 或 60，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="174"/>
        <source>--bitrate expects kbit/s from 100 to 400000, got &quot;%1&quot;</source>
        <translation>--bitrate 需要 100 到 400000 之间的 kbit/s，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="183"/>
        <source>--encoder expects auto, hardware or software, got &quot;%1&quot;</source>
        <translation>--encoder 需要 auto、hardware 或 software，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="193"/>
        <source>--preset expects performance, balanced or quality, got &quot;%1&quot;</source>
        <translation>--preset 需要 performance、balanced 或 quality，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="211"/>
        <source>--volume expects N=V with N from 1 to 4 and V from 0 to 4, got &quot;%1&quot;</source>
        <translation>--volume 需要 N=V（N 为 1 到 4，V 为 0 到 4），收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="221"/>
        <source>--program-volume expects a number from 0 to 4, got &quot;%1&quot;</source>
        <translation>--program-volume 需要 0 到 4 之间的数，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="230"/>
        <source>--gain expects a percentage from 0 to 1000, got &quot;%1&quot;</source>
        <translation>--gain 需要 0 到 1000 之间的百分比，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="258"/>
        <source>at most %1 image and video overlays</source>
        <translation>图片与视频叠加最多 %1 个</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="280"/>
        <source>--channel expects N=ADDRESS with N from 1 to 4, got &quot;%1&quot;</source>
        <translation>--channel 需要 N=地址（N 为 1 到 4），收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="289"/>
        <source>--base expects a channel from 1 to 4, got &quot;%1&quot;</source>
        <translation>--base 需要 1 到 4 的通道，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="297"/>
        <source>--duration expects a positive number of seconds, got &quot;%1&quot;</source>
        <translation>--duration 需要正的秒数，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="306"/>
        <source>--headless needs at least one --channel</source>
        <translation>--headless 至少需要一个 --channel</translation>
    </message>
    <message>
        <location filename="../app/CommandLine.cpp" line="310"/>
        <source>the base channel %1 has no source</source>
        <translation>基础通道 %1 没有信号源</translation>
    </message>
    <message>
        <location filename="../compose/OverlaySpecs.cpp" line="55"/>
        <source>the text overlay needs some words, got &quot;%1&quot;</source>
        <translation>文字叠加需要内容，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../compose/OverlaySpecs.cpp" line="67"/>
        <source>overlay &quot;%1&quot;: expected PATH@x,y,w,h (a rectangle in the 640x360 scene)</source>
        <translation>叠加 &quot;%1&quot;：需要 路径@x,y,w,h（640x360 场景中的矩形）</translation>
    </message>
    <message>
        <location filename="../compose/OverlaySpecs.cpp" line="73"/>
        <source>overlay &quot;%1&quot;: the path before &apos;@&apos; is empty</source>
        <translation>叠加 &quot;%1&quot;：&apos;@&apos; 前的路径为空</translation>
    </message>
    <message>
        <location filename="../compose/OverlaySpecs.cpp" line="78"/>
        <source>overlay &quot;%1&quot;: expected four numbers x,y,w,h after &apos;@&apos;</source>
        <translation>叠加 &quot;%1&quot;：&apos;@&apos; 后需要四个数 x,y,w,h</translation>
    </message>
    <message>
        <location filename="../compose/OverlaySpecs.cpp" line="86"/>
        <source>overlay &quot;%1&quot;: &quot;%2&quot; is not a number</source>
        <translation>叠加 &quot;%1&quot;：&quot;%2&quot; 不是数字</translation>
    </message>
    <message>
        <location filename="../compose/OverlaySpecs.cpp" line="91"/>
        <source>overlay &quot;%1&quot;: width and height must be positive</source>
        <translation>叠加 &quot;%1&quot;：宽和高必须为正</translation>
    </message>
</context>
</TS>
