#include <eod/serializableerror.h>
#include <vpx/vp8cx.h>
#include <vpx/vp8dx.h>
#include <vpx/vpx_decoder.h>
#include <vpx/vpx_encoder.h>

#include <cstring>
#include <string>

#include "eod/io/compress/detail/vp8codec.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

namespace {

// The speed setting of libvpx's realtime mode: fast enough for twice real time at 640x480 on
// one core, with little loss of quality against the slower settings.
const int REALTIME_CPU_USED = 8;
const unsigned int FRAMES_PER_SECOND = 60;

[[noreturn]] void throwVpx(vpx_codec_ctx_t* ctx, const char* what) {
    std::string message = std::string("Vp8Encoder - ") + what + " failed";
    if (ctx && ctx->err_detail) message += std::string(": ") + ctx->err_detail;
    throw SerializableError(message);
}

}  // namespace

struct Vp8Encoder::State {
    vpx_codec_ctx_t ctx;
    vpx_image_t image;
    bool open = false;
    bool has_image = false;
    unsigned int width = 0;
    unsigned int height = 0;
    vpx_codec_pts_t pts = 0;

    ~State() { close(); }
    void close() {
        if (open) vpx_codec_destroy(&ctx);
        if (has_image) vpx_img_free(&image);
        open = has_image = false;
    }
};

Vp8Encoder::Vp8Encoder(int quality, int keyframe_interval)
    : _state(new State), _quality(quality), _keyframe_interval(keyframe_interval) {}

Vp8Encoder::~Vp8Encoder() = default;

bool Vp8Encoder::encode(const unsigned char* pixels, unsigned int width, unsigned int height,
                        std::size_t stride, std::vector<unsigned char>& out) {
    State& s = *_state;
    vpx_enc_frame_flags_t flags = 0;
    if (!s.open || s.width != width || s.height != height) {
        s.close();
        vpx_codec_enc_cfg_t cfg;
        if (vpx_codec_enc_config_default(vpx_codec_vp8_cx(), &cfg, 0) != VPX_CODEC_OK) {
            throwVpx(nullptr, "vpx_codec_enc_config_default");
        }
        const unsigned int q = static_cast<unsigned int>(63 - (_quality * 63 + 50) / 100);
        cfg.g_w = width;
        cfg.g_h = height;
        cfg.g_timebase.num = 1;
        cfg.g_timebase.den = FRAMES_PER_SECOND;
        cfg.g_threads = 1;
        cfg.g_lag_in_frames = 0;
        cfg.rc_end_usage = VPX_Q;
        cfg.rc_min_quantizer = q;
        cfg.rc_max_quantizer = q;
        cfg.rc_dropframe_thresh = 0;
        cfg.kf_mode = VPX_KF_AUTO;
        cfg.kf_min_dist = 0;
        cfg.kf_max_dist = static_cast<unsigned int>(_keyframe_interval);
        if (vpx_codec_enc_init(&s.ctx, vpx_codec_vp8_cx(), &cfg, 0) != VPX_CODEC_OK) {
            throwVpx(nullptr, "vpx_codec_enc_init");
        }
        s.open = true;
        vpx_codec_control(&s.ctx, VP8E_SET_CPUUSED, REALTIME_CPU_USED);
        vpx_codec_control(&s.ctx, VP8E_SET_CQ_LEVEL, q);
        if (!vpx_img_alloc(&s.image, VPX_IMG_FMT_I420, width, height, 16)) {
            throwVpx(nullptr, "vpx_img_alloc");
        }
        s.has_image = true;
        const unsigned int cw = (width + 1) / 2;
        const unsigned int ch = (height + 1) / 2;
        for (unsigned int y = 0; y < ch; ++y) {
            std::memset(s.image.planes[VPX_PLANE_U] + y * s.image.stride[VPX_PLANE_U], 128, cw);
            std::memset(s.image.planes[VPX_PLANE_V] + y * s.image.stride[VPX_PLANE_V], 128, cw);
        }
        s.width = width;
        s.height = height;
        s.pts = 0;
        flags = VPX_EFLAG_FORCE_KF;
    }
    for (unsigned int y = 0; y < height; ++y) {
        std::memcpy(s.image.planes[VPX_PLANE_Y] + y * s.image.stride[VPX_PLANE_Y],
                    pixels + y * stride, width);
    }
    if (vpx_codec_encode(&s.ctx, &s.image, s.pts++, 1, flags, VPX_DL_REALTIME) != VPX_CODEC_OK) {
        throwVpx(&s.ctx, "vpx_codec_encode");
    }
    bool key = false;
    bool got = false;
    vpx_codec_iter_t iter = nullptr;
    while (const vpx_codec_cx_pkt_t* pkt = vpx_codec_get_cx_data(&s.ctx, &iter)) {
        if (pkt->kind != VPX_CODEC_CX_FRAME_PKT) continue;
        const unsigned char* p = static_cast<const unsigned char*>(pkt->data.frame.buf);
        out.insert(out.end(), p, p + pkt->data.frame.sz);
        key = (pkt->data.frame.flags & VPX_FRAME_IS_KEY) != 0;
        got = true;
    }
    // No lag and no frame dropping: every image gives exactly one frame.
    if (!got) throwVpx(&s.ctx, "vpx_codec_get_cx_data");
    return key;
}

struct Vp8Decoder::State {
    vpx_codec_ctx_t ctx;
    bool open = false;
    unsigned int width = 0;
    unsigned int height = 0;

    ~State() { close(); }
    void close() {
        if (open) vpx_codec_destroy(&ctx);
        open = false;
    }
};

Vp8Decoder::Vp8Decoder() : _state(new State) {}

Vp8Decoder::~Vp8Decoder() = default;

bool Vp8Decoder::decode(const unsigned char* data, std::size_t length, unsigned int width,
                        unsigned int height, std::size_t stride, unsigned char* dst) {
    State& s = *_state;
    if (length == 0 || length > UINT32_MAX) return false;
    vpx_codec_stream_info_t info;
    std::memset(&info, 0, sizeof info);
    info.sz = sizeof info;
    const bool parsed = vpx_codec_peek_stream_info(vpx_codec_vp8_dx(), data,
                                                   static_cast<unsigned int>(length),
                                                   &info) == VPX_CODEC_OK;
    if (parsed && info.is_kf) {
        // The frame's own size decides what libvpx allocates: it must be the declared one.
        if (info.w != width || info.h != height) return false;
        if (!s.open || s.width != width || s.height != height) {
            s.close();
            vpx_codec_dec_cfg_t cfg;
            std::memset(&cfg, 0, sizeof cfg);
            cfg.threads = 1;
            if (vpx_codec_dec_init(&s.ctx, vpx_codec_vp8_dx(), &cfg, 0) != VPX_CODEC_OK) {
                return false;
            }
            s.open = true;
            s.width = width;
            s.height = height;
        }
    } else if (!s.open || s.width != width || s.height != height) {
        return false;
    }
    if (vpx_codec_decode(&s.ctx, data, static_cast<unsigned int>(length), nullptr, 0) !=
        VPX_CODEC_OK) {
        // A damaged frame leaves libvpx's references in doubt: wait for the next key frame.
        s.close();
        return false;
    }
    vpx_codec_iter_t iter = nullptr;
    const vpx_image_t* img = vpx_codec_get_frame(&s.ctx, &iter);
    if (!img || img->d_w != width || img->d_h != height) return false;
    for (unsigned int y = 0; y < height; ++y) {
        std::memcpy(dst + y * stride, img->planes[VPX_PLANE_Y] + y * img->stride[VPX_PLANE_Y],
                    width);
    }
    return true;
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
