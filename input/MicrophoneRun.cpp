#include "input/MicrophoneRun.h"

#include "input/ContinuousStamps.h"

#include <thread>

extern "C" {
#include <libavutil/time.h>
}

namespace selvane {

void runMicrophone(const QString &microphone, DecodeHost &host)
{
    OpenedInput input = openMicrophoneInput(microphone, DecodeRun::interruptFor(host));
    if (input.error != SourceError::None) {
        if (!host.cancelled())
            host.failed(input.error, {});
        return;
    }
    const int index =
        av_find_best_stream(input.context.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0) {
        host.failed(SourceError::MicNoAudio, {});
        return;
    }
    AVStream *stream = input.context->streams[index];
    const AVCodec *codec = avcodec_find_decoder(stream->codecpar->codec_id);
    ffsupport::CodecContextPtr context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context || avcodec_parameters_to_context(context.get(), stream->codecpar) < 0 ||
        avcodec_open2(context.get(), codec, nullptr) < 0) {
        host.failed(SourceError::MicDecoderFailed, {});
        return;
    }
    ffsupport::PacketPtr packet(av_packet_alloc());
    ffsupport::FramePtr frame(av_frame_alloc());
    if (!packet || !frame) {
        host.failed(SourceError::AllocFailed, {});
        return;
    }
    AudioConverter converter;
    // A capture device stamps its sound with the wall clock, as the camera does its pictures:
    // both share one origin. Its blocks follow each other without holes (ContinuousStamps).
    ContinuousStamps stamps;
    const AudioConverter::Sink sink = [&host, &stamps](const std::int16_t *samples, int frames,
                                                       qint64 startUs) {
        host.deliverAudio(samples, frames, stamps.place(startUs, frames), host.timeline());
    };
    while (!host.cancelled()) {
        const int err = av_read_frame(input.context.get(), packet.get());
        if (err == AVERROR(EAGAIN)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            continue;
        }
        if (err < 0)
            break;
        if (packet->stream_index == index &&
            avcodec_send_packet(context.get(), packet.get()) >= 0) {
            while (avcodec_receive_frame(context.get(), frame.get()) >= 0) {
                const int64_t ts = frame->best_effort_timestamp != AV_NOPTS_VALUE
                                       ? frame->best_effort_timestamp
                                       : frame->pts;
                const qint64 frameUs = ts != AV_NOPTS_VALUE
                                           ? av_rescale_q(ts, stream->time_base, AV_TIME_BASE_Q)
                                           : av_gettime();
                converter.convert(frame.get(), context.get(), frameUs, sink);
                av_frame_unref(frame.get());
            }
        }
        av_packet_unref(packet.get());
    }
}

} // namespace selvane
