#pragma once

#include "base/Mutex.h"
#include "core/FunctionPort.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Norvane::Core {

/// Bytes of every text register of the library's own descriptions.
constexpr std::int64_t kTextLength = 256;

/// A node map over what is known of one thing at this moment (its view). Nodes are read on any thread; the
/// view is replaced by the discovery thread and by whoever opens a camera, and only nodes whose values differ
/// are invalidated, so that callbacks fire for real changes.
///
/// @tparam View  a value type that holds what the registers show.
template <class View>
class InformationMap {
public:
    /// Registers that show the view, by the name of the node that reads them.
    struct Text {
        const char* node;
        std::int64_t address;
        std::string (*read)(const View&);
    };
    struct Number {
        const char* node;
        std::int64_t address;
        std::int64_t (*read)(const View&);
        void (*write)(View&, std::int64_t) = nullptr;
    };

    InformationMap(std::vector<Text> texts, std::vector<Number> numbers, View view)
        : m_texts(std::move(texts)), m_numbers(std::move(numbers)), m_view(std::move(view)) {
        for (const Text& text : m_texts) {
            m_port->AddText(text.address, kTextLength, [this, read = text.read] { return read(Get()); });
        }
        for (const Number& number : m_numbers) {
            m_port->AddNumber(
                number.address, [this, read = number.read] { return read(Get()); },
                number.write ? Writer(number.write) : nullptr);
        }
    }
    InformationMap(const InformationMap&) = delete;
    InformationMap& operator=(const InformationMap&) = delete;

    /// A command register: `run` starts the work and returns at once; `running` tells whether it goes on.
    void AddCommand(std::int64_t address, std::function<void()> run, std::function<bool()> running) {
        m_port->AddNumber(
            address, [running = std::move(running)]() -> std::int64_t { return running() ? 1 : 0; },
            [run = std::move(run)](std::int64_t) { run(); });
    }

    /// Makes the nodes; once, after the last AddCommand.
    void Build(std::string_view description, const std::string& name) {
        GenApi::NodeMapOptions options;
        options.deviceName = name;
        m_map = GenApi::CreateNodeMap(description, m_port, options);
    }

    GenApi::INodeMap& Map() const { return *m_map; }

    View Get() const EXCLUDES(m_mutex) {
        MutexLock lock(m_mutex);
        return m_view;
    }

    /// Changes the view by `change(View&)` and invalidates the nodes that show something else now.
    template <class Change>
    void Update(Change&& change) EXCLUDES(m_mutex) {
        View before;
        View after;
        {
            MutexLock lock(m_mutex);
            before = m_view;
            change(m_view);
            after = m_view;
        }
        for (const Text& text : m_texts) {
            InvalidateIf(text.read(before) != text.read(after), text.node);
        }
        for (const Number& number : m_numbers) {
            InvalidateIf(number.read(before) != number.read(after), number.node);
        }
    }

private:
    std::function<void(std::int64_t)> Writer(void (*write)(View&, std::int64_t)) {
        return [this, write](std::int64_t value) {
            MutexLock lock(m_mutex);
            write(m_view, value);
        };
    }

    void InvalidateIf(bool differs, const char* name) const {
        if (GenApi::INode* node = differs ? m_map->GetNode(name) : nullptr) {
            node->InvalidateNode();
        }
    }

    const std::vector<Text> m_texts;
    const std::vector<Number> m_numbers;
    mutable Mutex m_mutex;
    View m_view GUARDED_BY(m_mutex);
    const std::shared_ptr<FunctionPort> m_port = std::make_shared<FunctionPort>();
    std::shared_ptr<GenApi::INodeMap> m_map;
};

} // namespace Norvane::Core
