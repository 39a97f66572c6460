#include "AravisEngine.h"

#include "genapi/Text.h"

extern "C" {
#include <arv.h>
}

/// A device without a camera: its registers are a port's.
struct PortDevice {
    ArvDevice parent;
    Norvane::GenApi::IPort* port;
};
struct PortDeviceClass {
    ArvDeviceClass parent;
};
G_DEFINE_TYPE(PortDevice, port_device, ARV_TYPE_DEVICE)

namespace {

gboolean ReadMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error) {
    try {
        reinterpret_cast<PortDevice*>(device)->port->Read(buffer, static_cast<std::int64_t>(address), size);
        return TRUE;
    } catch (const std::exception& failure) {
        g_set_error(error, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_INVALID_PARAMETER, "%s", failure.what());
        return FALSE;
    }
}

gboolean WriteMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError**) {
    reinterpret_cast<PortDevice*>(device)->port->Write(buffer, static_cast<std::int64_t>(address), size);
    return TRUE;
}

} // namespace

static void port_device_class_init(PortDeviceClass* type) {
    type->parent.read_memory = ReadMemory;
    type->parent.write_memory = WriteMemory;
}
static void port_device_init(PortDevice*) {}

namespace Norvane::GenApi {

struct AravisEngine::Members {
    std::string description;
    std::shared_ptr<IPort> port;
    PortDevice* device = nullptr;
    ArvGc* genicam = nullptr;
};

AravisEngine::AravisEngine(const std::string& description, std::shared_ptr<IPort> port)
    : m(std::make_unique<Members>()) {
    m->description = description;
    m->port = std::move(port);
    m->device = static_cast<PortDevice*>(g_object_new(port_device_get_type(), nullptr));
    m->device->port = m->port.get();
    m->genicam = arv_gc_new(&m->device->parent, m->description.data(), m->description.size());
    if (m->genicam) {
        arv_gc_set_register_cache_policy(m->genicam, ARV_REGISTER_CACHE_POLICY_ENABLE);
    }
}

AravisEngine::~AravisEngine() {
    g_clear_object(&m->genicam);
    g_clear_object(&m->device);
}

bool AravisEngine::Good() const {
    return m->genicam != nullptr;
}

namespace {

class Failure {
public:
    ~Failure() { g_clear_error(&m_error); }
    operator GError**() { return &m_error; }
    bool Happened() const { return m_error != nullptr; }

private:
    GError* m_error = nullptr;
};

template <class Get, class Format>
std::string Try(Get&& get, Format&& format) {
    Failure failure;
    const auto value = get(failure);
    return failure.Happened() ? "error" : format(value);
}

std::string FormatLong(gint64 value) {
    return std::to_string(value);
}

} // namespace

FeatureState AravisEngine::StateOf(const std::string& feature) const {
    FeatureState state{feature, "-", "-", "-", "-", "-", "-", "-"};
    ArvGcNode* const node = arv_gc_get_node(m->genicam, feature.c_str());
    if (!ARV_IS_GC_FEATURE_NODE(node)) {
        state.available = "no such node";
        return state;
    }
    auto* const featureNode = ARV_GC_FEATURE_NODE(node);
    Failure implemented;
    Failure available;
    Failure locked;
    state.available = !arv_gc_feature_node_is_implemented(featureNode, implemented) ? "not implemented"
                      : !arv_gc_feature_node_is_available(featureNode, available)   ? "not available"
                                                                                    : "yes";
    if (state.available != "yes") {
        return state;
    }
    auto mode = arv_gc_feature_node_get_actual_access_mode(featureNode);
    if (arv_gc_feature_node_is_locked(featureNode, locked) && mode == ARV_GC_ACCESS_MODE_RW) {
        mode = ARV_GC_ACCESS_MODE_RO;
    }
    state.access = mode == ARV_GC_ACCESS_MODE_UNDEFINED ? "-" : arv_gc_access_mode_to_string(mode);
    if (ARV_IS_GC_ENUMERATION(node)) {
        auto* const enumeration = ARV_GC_ENUMERATION(node);
        state.value =
            Try([&](GError** e) { return arv_gc_enumeration_get_int_value(enumeration, e); }, FormatLong);
        guint count = 0;
        Failure failure;
        const char** const names =
            arv_gc_enumeration_dup_available_string_values(enumeration, &count, failure);
        state.entries = names ? "" : "error";
        for (guint i = 0; names && i < count; ++i) {
            state.entries += std::string(i ? "," : "") + names[i];
        }
        g_free(names);
    } else if (ARV_IS_GC_BOOLEAN(node)) {
        state.value =
            Try([&](GError** e) { return gint64(arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), e)); },
                FormatLong);
    } else if (ARV_IS_GC_STRING(node)) {
        state.value = Try([&](GError** e) { return arv_gc_string_get_value(ARV_GC_STRING(node), e); },
                          [](const char* text) { return std::string(text ? text : ""); });
    } else if (ARV_IS_GC_COMMAND(node) || ARV_IS_GC_CATEGORY(node)) {
        // Neither has a value.
    } else if (ARV_IS_GC_FLOAT(node)) {
        auto* const number = ARV_GC_FLOAT(node);
        state.value = Try([&](GError** e) { return arv_gc_float_get_value(number, e); }, FormatShortest);
        state.min = Try([&](GError** e) { return arv_gc_float_get_min(number, e); }, FormatShortest);
        state.max = Try([&](GError** e) { return arv_gc_float_get_max(number, e); }, FormatShortest);
        // The smallest positive double is Aravis's word for "no increment".
        state.inc =
            Try([&](GError** e) { return arv_gc_float_get_inc(number, e); },
                [](double inc) { return inc > G_MINDOUBLE ? FormatShortest(inc) : std::string("-"); });
    } else if (ARV_IS_GC_INTEGER(node)) {
        auto* const number = ARV_GC_INTEGER(node);
        state.value = Try([&](GError** e) { return arv_gc_integer_get_value(number, e); }, FormatLong);
        state.min = Try([&](GError** e) { return arv_gc_integer_get_min(number, e); }, FormatLong);
        state.max = Try([&](GError** e) { return arv_gc_integer_get_max(number, e); }, FormatLong);
        state.inc = Try([&](GError** e) { return arv_gc_integer_get_inc(number, e); }, FormatLong);
    }
    return state;
}

void AravisEngine::Touch(const std::string& feature) const {
    ArvGcNode* const node = arv_gc_get_node(m->genicam, feature.c_str());
    if (!ARV_IS_GC_FEATURE_NODE(node)) {
        return;
    }
    auto* const featureNode = ARV_GC_FEATURE_NODE(node);
    Failure failures[4];
    if (!arv_gc_feature_node_is_implemented(featureNode, failures[0]) ||
        !arv_gc_feature_node_is_available(featureNode, failures[1])) {
        return;
    }
    arv_gc_feature_node_is_locked(featureNode, failures[2]);
    arv_gc_feature_node_get_actual_access_mode(featureNode);
    if (ARV_IS_GC_ENUMERATION(node)) {
        arv_gc_enumeration_get_int_value(ARV_GC_ENUMERATION(node), failures[3]);
    } else if (ARV_IS_GC_BOOLEAN(node)) {
        arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), failures[3]);
    } else if (ARV_IS_GC_STRING(node)) {
        arv_gc_string_get_value(ARV_GC_STRING(node), failures[3]);
    } else if (ARV_IS_GC_FLOAT(node)) {
        arv_gc_float_get_value(ARV_GC_FLOAT(node), failures[3]);
    } else if (ARV_IS_GC_INTEGER(node)) {
        arv_gc_integer_get_value(ARV_GC_INTEGER(node), failures[3]);
    }
}

std::string AravisEngine::OwnDescription() {
    ArvFakeCamera* const camera = arv_fake_camera_new("judge");
    std::size_t size = 0;
    const char* const text = arv_fake_camera_get_genicam_xml(camera, &size);
    std::string description(text ? text : "", text ? size : 0);
    g_object_unref(camera);
    return description;
}

std::vector<std::uint8_t> AravisEngine::OwnMemory() {
    ArvFakeCamera* const camera = arv_fake_camera_new("judge");
    std::vector<std::uint8_t> memory(0x10000);
    for (std::uint32_t address = 0; address < memory.size(); address += 4) {
        arv_fake_camera_read_memory(camera, address, 4, memory.data() + address);
    }
    g_object_unref(camera);
    return memory;
}

std::string AravisEngine::Evaluate(const std::string& formula, bool asInteger, long long a, long long b) {
    ArvEvaluator* const evaluator = arv_evaluator_new(formula.c_str());
    std::string result;
    if (asInteger) {
        arv_evaluator_set_int64_variable(evaluator, "A", a);
        arv_evaluator_set_int64_variable(evaluator, "B", b);
        result = Try([&](GError** e) { return arv_evaluator_evaluate_as_int64(evaluator, e); }, FormatLong);
    } else {
        arv_evaluator_set_double_variable(evaluator, "A", static_cast<double>(a));
        arv_evaluator_set_double_variable(evaluator, "B", static_cast<double>(b));
        result =
            Try([&](GError** e) { return arv_evaluator_evaluate_as_double(evaluator, e); }, FormatShortest);
    }
    g_object_unref(evaluator);
    return result;
}

} // namespace Norvane::GenApi
