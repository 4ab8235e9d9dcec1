// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/pods.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>
#include <spa/param/route.h>
#include <spa/pod/builder.h>
#include <spa/pod/iter.h>
#include <spa/pod/parser.h>

namespace sordin::pipewire {

VolumeProps volumeProps(const spa_pod* props) {
    VolumeProps result;
    if (props == nullptr || !spa_pod_is_object_type(props, SPA_TYPE_OBJECT_Props)) {
        return result;
    }
    if (const auto* channels = spa_pod_find_prop(props, nullptr, SPA_PROP_channelVolumes)) {
        std::array<float, SPA_AUDIO_MAX_CHANNELS> values{};
        const auto count = spa_pod_copy_array(&channels->value, SPA_TYPE_Float, values.data(), values.size());
        result.channels.assign(values.begin(), values.begin() + count);
        for (float& channel : result.channels) {
            channel = channel > 0 && std::isfinite(channel) ? channel : 0.0F;
        }
    }
    bool muted = false;
    const auto* mute = spa_pod_find_prop(props, nullptr, SPA_PROP_mute);
    if (mute != nullptr && spa_pod_get_bool(&mute->value, &muted) >= 0) {
        result.muted = muted;
    }
    return result;
}

std::optional<Route> outputRoute(const spa_pod* route) {
    if (route == nullptr || !spa_pod_is_object_type(route, SPA_TYPE_OBJECT_ParamRoute)) {
        return std::nullopt;
    }
    const auto number = [route](std::uint32_t key) -> std::optional<int> {
        const auto* prop = spa_pod_find_prop(route, nullptr, key);
        std::int32_t value = 0;
        return prop != nullptr && spa_pod_get_int(&prop->value, &value) >= 0 ? std::optional(value)
                                                                             : std::nullopt;
    };
    const auto index = number(SPA_PARAM_ROUTE_index);
    const auto device = number(SPA_PARAM_ROUTE_device);
    const auto* direction = spa_pod_find_prop(route, nullptr, SPA_PARAM_ROUTE_direction);
    std::uint32_t directionId = SPA_DIRECTION_INPUT;
    if (!index || !device || direction == nullptr || spa_pod_get_id(&direction->value, &directionId) < 0 ||
        directionId != SPA_DIRECTION_OUTPUT) {
        return std::nullopt;
    }
    Route result{*index, *device, {}, {}};
    const auto* name = spa_pod_find_prop(route, nullptr, SPA_PARAM_ROUTE_name);
    const char* text = nullptr;
    if (name != nullptr && spa_pod_get_string(&name->value, &text) >= 0 && text != nullptr) {
        result.name = text;
    }
    if (const auto* props = spa_pod_find_prop(route, nullptr, SPA_PARAM_ROUTE_props)) {
        result.volume = volumeProps(&props->value);
    }
    return result;
}

namespace {

/// A pod builder and its memory, which is large enough for all pods in this file.
class Builder {
public:
    Builder() {
        memory_.resize(room);
        spa_pod_builder_init(&builder_, memory_.data(), room);
    }
    ~Builder() = default;
    Builder(const Builder&) = delete;
    Builder& operator=(const Builder&) = delete;

    [[nodiscard]] spa_pod_builder* get() { return &builder_; }

    void add(std::uint32_t key, std::int32_t value) {
        spa_pod_builder_prop(&builder_, key, 0);
        spa_pod_builder_int(&builder_, value);
    }
    void add(std::uint32_t key, bool value) {
        spa_pod_builder_prop(&builder_, key, 0);
        spa_pod_builder_bool(&builder_, value);
    }

    /// Adds an object of type Props, as the value of the last property or as the whole pod.
    void addProps(const VolumeProps& volume, std::uint32_t id) {
        spa_pod_frame frame{};
        spa_pod_builder_push_object(&builder_, &frame, SPA_TYPE_OBJECT_Props, id);
        if (!volume.channels.empty()) {
            spa_pod_builder_prop(&builder_, SPA_PROP_channelVolumes, 0);
            spa_pod_builder_array(&builder_, sizeof(float), SPA_TYPE_Float,
                                  static_cast<std::uint32_t>(volume.channels.size()), volume.channels.data());
        }
        if (volume.muted) {
            add(SPA_PROP_mute, *volume.muted);
        }
        spa_pod_builder_pop(&builder_, &frame);
    }

    [[nodiscard]] std::vector<std::byte> take() { return std::move(memory_); }

private:
    static constexpr std::uint32_t room = 2048;  // the largest pod has 64 channels, 256 bytes and headers
    std::vector<std::byte> memory_;
    spa_pod_builder builder_{};
};

}  // namespace

Pod Pod::ofProps(const VolumeProps& volume) {
    Builder builder;
    builder.addProps(volume, SPA_PARAM_Props);
    Pod pod;
    pod.memory_ = builder.take();
    return pod;
}

Pod Pod::ofRoute(const Route& route, const VolumeProps& volume) {
    Builder builder;
    spa_pod_frame frame{};
    spa_pod_builder_push_object(builder.get(), &frame, SPA_TYPE_OBJECT_ParamRoute, SPA_PARAM_Route);
    builder.add(SPA_PARAM_ROUTE_index, route.index);
    builder.add(SPA_PARAM_ROUTE_device, route.profileDevice);
    spa_pod_builder_prop(builder.get(), SPA_PARAM_ROUTE_props, 0);
    builder.addProps(volume, SPA_PARAM_Route);
    builder.add(SPA_PARAM_ROUTE_save, false);
    spa_pod_builder_pop(builder.get(), &frame);
    Pod pod;
    pod.memory_ = builder.take();
    return pod;
}

Pod Pod::ofStereoFormat(std::uint32_t rate) {
    spa_audio_info_raw info{};
    info.format = SPA_AUDIO_FORMAT_F32;
    info.rate = rate;
    info.channels = 2;
    info.position[0] = SPA_AUDIO_CHANNEL_FL;
    info.position[1] = SPA_AUDIO_CHANNEL_FR;
    Builder builder;
    spa_format_audio_raw_build(builder.get(), SPA_PARAM_EnumFormat, &info);
    Pod pod;
    pod.memory_ = builder.take();
    return pod;
}

const spa_pod* Pod::get() const {
    return static_cast<const spa_pod*>(static_cast<const void*>(memory_.data()));
}

std::string nodeName(std::string_view metadataValue) {
    const auto json = nlohmann::json::parse(metadataValue, nullptr, false);
    const auto name = json.is_object() ? json.find("name") : json.end();
    return name != json.end() && name->is_string() ? name->get<std::string>() : std::string();
}

}  // namespace sordin::pipewire
