// SPDX-License-Identifier: MIT
// fake_card: a sound card with the routes "fake-speaker" and "fake-headphones" and the sink "fake-sink". Like
// an ALSA card it keeps a volume per route, and whether each is to be saved. Ends when stdin ends.
//   On stdin: "route NAME" plugs in that route, "volume LEFT RIGHT" (linear) acts like hardware keys,
//   "configure NODE TIMES" sets a parameter of another client's node, as the session manager does, which also
//   owns the cards. On stdout:
//   {"ready":true}, and {"route":NAME,"volumes":[..],"save":..} for each Route parameter written.
#include "system/input_lines.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <iomanip>
#include <iostream>
#include <pipewire/pipewire.h>
#include <spa/monitor/device.h>
#include <spa/monitor/utils.h>
#include <spa/param/audio/raw.h>
#include <spa/param/profile.h>
#include <spa/param/props.h>
#include <spa/param/route.h>
#include <spa/pod/builder.h>
#include <spa/pod/iter.h>
#include <spa/pod/parser.h>
#include <sstream>
#include <string>
#include <utility>

namespace sordin {
namespace {

constexpr int zero = 0;  // the index of the profile and of the device in the card

// The macros of PipeWire cause compiler warnings.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wold-style-cast"
void emitDeviceInfo(spa_hook_list& listeners, const spa_device_info& info) {
    spa_device_emit_info(&listeners, &info);
}
void emitResult(spa_hook_list& listeners, int sequence, std::uint32_t type, const void* result) {
    spa_device_emit_result(&listeners, sequence, 0, type, result);
}
bool parseRoute(const spa_pod* route, int& index, const spa_pod*& properties, bool& save) {
    return spa_pod_parse_object(route, SPA_TYPE_OBJECT_ParamRoute, nullptr, SPA_PARAM_ROUTE_index,
                                SPA_POD_Int(&index), SPA_PARAM_ROUTE_props, SPA_POD_OPT_Pod(&properties),
                                SPA_PARAM_ROUTE_save, SPA_POD_OPT_Bool(&save)) >= 0;
}
void setProps(pw_node* node, const spa_pod* properties) {
    pw_node_set_param(node, SPA_PARAM_Props, 0, properties);
}
void addClasses(spa_pod_builder& builder) {
    spa_pod_frame frame{};
    spa_pod_builder_push_struct(&builder, &frame);
    spa_pod_builder_int(&builder, 1);
    spa_pod_builder_add_struct(&builder, SPA_POD_String("Audio/Sink"), SPA_POD_Int(1),
                               SPA_POD_String("card.profile.devices"),
                               SPA_POD_Array(sizeof(int), SPA_TYPE_Int, 1, &zero));
    spa_pod_builder_pop(&builder, &frame);
}
#pragma GCC diagnostic pop

struct Route {
    const char* name;
    std::array<float, 2> volumes;  // linear
    bool save = false;

    void take(const spa_pod* properties) {
        if (properties == nullptr) {
            return;
        }
        const spa_pod_prop* given = spa_pod_find_prop(properties, nullptr, SPA_PROP_channelVolumes);
        std::array<float, 2> values{};
        const auto count = given == nullptr ? 0
                                            : spa_pod_copy_array(&given->value, SPA_TYPE_Float, values.data(),
                                                                 values.size());
        if (count > 0) {
            volumes = {values[0], values[count - 1]};  // one value applies to all channels
        }
    }
};

class FakeCard {
public:
    FakeCard() {
        spa_hook_list_init(&listeners_);
        device_.iface = {SPA_TYPE_INTERFACE_Device, SPA_VERSION_DEVICE, {&methods, this}};
        cardEvents_.version = PW_VERSION_PROXY_EVENTS;
        cardEvents_.bound = cardBound;
        sinkEvents_.version = PW_VERSION_PROXY_EVENTS;
        sinkEvents_.bound = sinkBound;
    }
    ~FakeCard() = default;  // the end of the process cleans up
    FakeCard(const FakeCard&) = delete;
    FakeCard& operator=(const FakeCard&) = delete;

    int run() {
        if (core_ == nullptr) {
            std::cerr << "fake_card: cannot connect" << std::endl;
            return 1;
        }
        auto* card = static_cast<pw_proxy*>(
            pw_core_export(core_, SPA_TYPE_INTERFACE_Device, &properties, &device_, 0));
        pw_proxy_add_listener(card, &cardListener_, &cardEvents_, this);
        const InputLines input(loop_, [this](const std::string& line) { obey(line); });
        pw_main_loop_run(loop_);
        return 0;
    }

private:
    static FakeCard& self(void* data) { return *static_cast<FakeCard*>(data); }

    static void cardBound(void* data, std::uint32_t id) { self(data).cardId_ = id; }
    /// Called after the session manager has chosen the route, as for ALSA cards. If the sink appears earlier,
    /// the session manager may never assign a route.
    void makeSink() {
        pw_properties* sink =
            pw_properties_new(PW_KEY_FACTORY_NAME, "support.null-audio-sink", PW_KEY_NODE_NAME, "fake-sink",
                              PW_KEY_NODE_DESCRIPTION, "Fake Card Sink", PW_KEY_MEDIA_CLASS, "Audio/Sink",
                              PW_KEY_DEVICE_ID, std::to_string(cardId_).c_str(), PW_KEY_DEVICE_API, "alsa",
                              PW_KEY_PRIORITY_SESSION, "3000", PW_KEY_PRIORITY_DRIVER, "3000",
                              "card.profile.device", "0", "audio.position", "[ FL FR ]", nullptr);
        sink_ = static_cast<pw_proxy*>(
            pw_core_create_object(core_, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, &sink->dict, 0));
        pw_properties_free(sink);
        pw_proxy_add_listener(sink_, &sinkListener_, &sinkEvents_, this);
    }
    static void sinkBound(void* /*data*/, std::uint32_t /*id*/) {
        std::cout << R"({"ready":true})" << std::endl;
    }

    void obey(const std::string& line) {
        std::istringstream words(line);
        std::string command;
        std::string name;
        words >> command;
        if (command == "route" && words >> name) {
            active_ = name == routes_[1].name ? 1 : 0;
            changed({enumRoute, activeRoute});
        } else if (command == "volume") {
            words >> routes_[active_].volumes[0] >> routes_[active_].volumes[1];
            changed({activeRoute});
        } else if (command == "configure") {
            std::uint32_t node = 0;
            int times = 0;
            words >> node >> times;
            configure(node, times);
        }
    }
    void configure(std::uint32_t node, int times) {
        pw_registry* registry = pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0);
        void* bound = pw_registry_bind(registry, node, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0);
        std::array<std::uint8_t, 64> bytes{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, bytes.data(), bytes.size());
        spa_pod_frame frame{};
        spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Props, SPA_PARAM_Props);
        const auto* nothing = static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &frame));
        for (int i = 0; i < times; ++i) {
            setProps(static_cast<pw_node*>(bound), nothing);
        }
    }

    // The server's calls to the device.

    static int addListener(void* data, spa_hook* hook, const spa_device_events* events, void* eventData) {
        FakeCard& card = self(data);
        spa_hook_list others{};
        spa_hook_list_isolate(&card.listeners_, &others, hook, events, eventData);
        card.emitInfo();
        spa_hook_list_join(&card.listeners_, &others);
        return 0;
    }
    static int sync(void* data, int sequence) {
        emitResult(self(data).listeners_, sequence, 0, nullptr);
        return 0;
    }
    static int enumerate(void* data, int sequence, std::uint32_t id, std::uint32_t start, std::uint32_t most,
                         const spa_pod* /*filter*/) {
        FakeCard& card = self(data);
        const std::uint32_t count = id == SPA_PARAM_EnumRoute ? 2 : 1;
        for (std::uint32_t index = start; index < count && index - start < most; ++index) {
            std::array<std::uint8_t, 2048> bytes{};
            spa_pod_builder builder{};
            spa_pod_builder_init(&builder, bytes.data(), bytes.size());
            spa_result_device_params result{id, index, index + 1, nullptr};
            if (id == SPA_PARAM_EnumRoute || id == SPA_PARAM_Route) {
                result.param = card.routeParameter(builder, id, id == SPA_PARAM_Route ? card.active_ : index);
            } else if (id == SPA_PARAM_EnumProfile || id == SPA_PARAM_Profile) {
                result.param = profileParameter(builder, id);
            } else {
                return -ENOENT;
            }
            emitResult(card.listeners_, sequence, SPA_RESULT_TYPE_DEVICE_PARAMS, &result);
        }
        return 0;
    }
    static int setParameter(void* data, std::uint32_t id, std::uint32_t /*flags*/, const spa_pod* parameter) {
        if (id != SPA_PARAM_Route || parameter == nullptr) {
            return 0;  // the only profile
        }
        FakeCard& card = self(data);
        int index = -1;
        bool save = false;
        const spa_pod* volumes = nullptr;
        if (!parseRoute(parameter, index, volumes, save) || index < 0 || index > 1) {
            return -EINVAL;
        }
        const bool other = std::exchange(card.active_, static_cast<std::uint32_t>(index)) != card.active_;
        Route& written = card.routes_[card.active_];
        written.save = save;
        written.take(volumes);
        std::cout << std::boolalpha << std::setprecision(9) << R"({"route":")" << written.name
                  << R"(","volumes":[)" << written.volumes[0] << "," << written.volumes[1] << R"(],"save":)"
                  << written.save << "}" << std::endl;
        other ? card.changed({enumRoute, activeRoute}) : card.changed({activeRoute});
        if (card.sink_ == nullptr) {
            card.makeSink();
        }
        return 0;
    }

    static spa_pod* profileParameter(spa_pod_builder& builder, std::uint32_t id) {
        spa_pod_frame frame{};
        spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_ParamProfile, id);
        spa_pod_builder_add(&builder, SPA_PARAM_PROFILE_index, SPA_POD_Int(0), SPA_PARAM_PROFILE_name,
                            SPA_POD_String("output:stereo"), SPA_PARAM_PROFILE_description,
                            SPA_POD_String("Stereo"), SPA_PARAM_PROFILE_priority, SPA_POD_Int(10),
                            SPA_PARAM_PROFILE_available, SPA_POD_Id(SPA_PARAM_AVAILABILITY_yes), 0);
        spa_pod_builder_prop(&builder, SPA_PARAM_PROFILE_classes, 0);
        addClasses(builder);
        return static_cast<spa_pod*>(spa_pod_builder_pop(&builder, &frame));
    }

    /// An entry of the list of routes, or the active route with its volume.
    [[nodiscard]] spa_pod* routeParameter(spa_pod_builder& builder, std::uint32_t id,
                                          std::uint32_t index) const {
        const Route& route = routes_[index];
        std::array<spa_pod_frame, 2> frames{};
        spa_pod_builder_push_object(&builder, &frames[0], SPA_TYPE_OBJECT_ParamRoute, id);
        spa_pod_builder_add(
            &builder, SPA_PARAM_ROUTE_index, SPA_POD_Int(index), SPA_PARAM_ROUTE_direction,
            SPA_POD_Id(SPA_DIRECTION_OUTPUT), SPA_PARAM_ROUTE_name, SPA_POD_String(route.name),
            SPA_PARAM_ROUTE_description, SPA_POD_String(route.name), SPA_PARAM_ROUTE_priority,
            SPA_POD_Int(100), SPA_PARAM_ROUTE_available,
            SPA_POD_Id(index == active_ ? SPA_PARAM_AVAILABILITY_yes : SPA_PARAM_AVAILABILITY_no),
            SPA_PARAM_ROUTE_profiles, SPA_POD_Array(sizeof(int), SPA_TYPE_Int, 1, &zero),
            SPA_PARAM_ROUTE_devices, SPA_POD_Array(sizeof(int), SPA_TYPE_Int, 1, &zero), 0);
        if (id == SPA_PARAM_Route) {
            spa_pod_builder_add(&builder, SPA_PARAM_ROUTE_device, SPA_POD_Int(0), SPA_PARAM_ROUTE_profile,
                                SPA_POD_Int(0), SPA_PARAM_ROUTE_save, SPA_POD_Bool(route.save), 0);
            spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_props, 0);
            spa_pod_builder_push_object(&builder, &frames[1], SPA_TYPE_OBJECT_Props, id);
            static constexpr std::array<std::uint32_t, 2> channels{SPA_AUDIO_CHANNEL_FL,
                                                                   SPA_AUDIO_CHANNEL_FR};
            spa_pod_builder_add(&builder, SPA_PROP_mute, SPA_POD_Bool(false), SPA_PROP_channelVolumes,
                                SPA_POD_Array(sizeof(float), SPA_TYPE_Float, 2, route.volumes.data()),
                                SPA_PROP_volumeBase, SPA_POD_Float(1.0), SPA_PROP_volumeStep,
                                SPA_POD_Float(1.0 / 65536), SPA_PROP_channelMap,
                                SPA_POD_Array(sizeof(std::uint32_t), SPA_TYPE_Id, 2, channels.data()), 0);
            spa_pod_builder_pop(&builder, &frames[1]);
        }
        return static_cast<spa_pod*>(spa_pod_builder_pop(&builder, &frames[0]));
    }

    enum Parameter : std::size_t { enumProfile, profile, enumRoute, activeRoute };

    void changed(std::initializer_list<Parameter> parameters) {
        for (const Parameter parameter : parameters) {
            parameters_[parameter].flags ^= SPA_PARAM_INFO_SERIAL;  // toggling this bit announces a new value
        }
        emitInfo();
    }
    void emitInfo() {
        spa_device_info info{};
        info.version = SPA_VERSION_DEVICE_INFO;
        info.change_mask = SPA_DEVICE_CHANGE_MASK_PARAMS | SPA_DEVICE_CHANGE_MASK_PROPS;
        info.props = &properties;
        info.params = parameters_.data();
        info.n_params = static_cast<std::uint32_t>(parameters_.size());
        emitDeviceInfo(listeners_, info);
    }

    static constexpr std::array<spa_dict_item, 4> items{{{"device.name", "fake_card.0"},
                                                         {"device.description", "Fake Card"},
                                                         {"media.class", "Audio/Device"},
                                                         {"device.api", "alsa"}}};
    static constexpr spa_dict properties{0, items.size(), items.data()};
    static constexpr spa_device_methods methods{SPA_VERSION_DEVICE_METHODS, addListener, sync, enumerate,
                                                setParameter};

    pw_main_loop* loop_ = pw_main_loop_new(nullptr);
    pw_context* context_ = pw_context_new(pw_main_loop_get_loop(loop_), nullptr, 0);
    pw_core* core_ = pw_context_connect(context_, nullptr, 0);
    pw_proxy* sink_ = nullptr;
    pw_proxy_events cardEvents_{};
    pw_proxy_events sinkEvents_{};
    spa_hook cardListener_{};
    spa_hook sinkListener_{};
    spa_device device_{};
    spa_hook_list listeners_{};
    std::array<spa_param_info, 4> parameters_{{{SPA_PARAM_EnumProfile, SPA_PARAM_INFO_READ, 0, 0, {}},
                                               {SPA_PARAM_Profile, SPA_PARAM_INFO_READWRITE, 0, 0, {}},
                                               {SPA_PARAM_EnumRoute, SPA_PARAM_INFO_READ, 0, 0, {}},
                                               {SPA_PARAM_Route, SPA_PARAM_INFO_READWRITE, 0, 0, {}}}};
    std::array<Route, 2> routes_{{{"fake-speaker", {0.343F, 0.343F}}, {"fake-headphones", {0.125F, 0.125F}}}};
    std::uint32_t active_ = 0;
    std::uint32_t cardId_ = 0;
};

}  // namespace
}  // namespace sordin

int main() {
    pw_init(nullptr, nullptr);
    return sordin::FakeCard().run();
}
