// The operations by their signatures, and the walk over a model.
#include "provider/operations/OperationWalk.h"

#include "provider/ProviderTesting.h"

#include <cmath>
#include <cstring>
#include <span>
#include <sstream>
#include <typeinfo>

namespace {

// The handles or numbers to pass for a parameter.
std::vector<uint64_t> ChoicesFor(const World& world, const Parameter& parameter) {
    if (!parameter.IsRead) {
        return {parameter.Plain};
    }
    const auto known = world.Handles.find(parameter.Kind);
    return known != world.Handles.end() ? known->second : std::vector<uint64_t>();
}

template <class Type> Type Argument(Call& call, size_t at) {
    if constexpr (std::is_same_v<Type, const char*>) {
        return at == call.Null ? nullptr : call.Path.c_str();
    } else if constexpr (std::is_pointer_v<Type>) {
        return at == call.Null ? nullptr : reinterpret_cast<Type>(call.Outputs[at].data());
    } else if constexpr (std::is_class_v<Type>) {
        return {call.Values[at]};
    } else {
        return static_cast<Type>(call.Values[at]);
    }
}

// Both compilers give a type's length and its name.
template <class Handle> std::string KindOf() {
    const std::string name = typeid(Handle).name();
    const size_t start = name.find_first_not_of("0123456789");
    return name.substr(start, name.size() - start - std::string_view("Handle").size());
}

template <class Value> std::string ShowValue(const uint8_t* bytes) {
    if constexpr (std::is_array_v<Value>) {
        constexpr size_t size = sizeof(Value) / std::extent_v<Value>;
        std::string text;
        for (size_t i = 0; i < std::extent_v<Value>; ++i) {
            text += (i == 0 ? "" : ",") + ShowValue<std::remove_extent_t<Value>>(bytes + i * size);
        }
        return text;
    } else {
        Value value;
        std::memcpy(&value, bytes, sizeof value);
        std::ostringstream text;
        text.precision(9);
        // Without rounding errors and negative zeros.
        text << std::round(static_cast<double>(value) * 1e6) / 1e6 + 0.0;
        return text.str();
    }
}

template <class Type> Parameter DescribeParameter(std::string_view operation) {
    using Value = std::remove_pointer_t<Type>;
    Parameter parameter;
    parameter.IsPointer = std::is_pointer_v<Type>;
    if constexpr (std::is_class_v<Value>) {
        parameter.Kind = KindOf<Value>();
        parameter.Size = sizeof(Value);
        const bool isFilled = parameter.Kind == "String" || parameter.Kind == "ImageRep";
        parameter.IsRead = !parameter.IsPointer || operation.ends_with("Release") ||
                           (isFilled && !operation.ends_with("Create"));
    } else if constexpr (!std::is_pointer_v<Type>) {
        parameter.Plain = std::is_same_v<Type, uint64_t> ? ListLimit : 1;
    } else if constexpr (!std::is_same_v<Type, const char*>) {
        parameter.Size = sizeof(Value);
        parameter.Show = ShowValue<Value>;
    }
    return parameter;
}

template <class Result, class... Types>
Operation Describe(std::string_view name, Result (*function)(Types...)) {
    Operation operation = {std::string(name), {DescribeParameter<Types>(name)...}, "", {}};
    if constexpr (std::is_class_v<Result>) {
        operation.ReturnedKind = KindOf<Result>();
    }
    operation.Run = [function](Call& call) {
        return [&]<size_t... At>(std::index_sequence<At...>) {
            if constexpr (std::is_void_v<Result>) {
                function(Argument<Types>(call, At)...);
                return true;
            } else if constexpr (std::is_class_v<Result>) {
                call.Returned = function(Argument<Types>(call, At)...).Value;
                return call.Returned != 0;
            } else {
                return function(Argument<Types>(call, At)...) == 0;
            }
        }
        (std::index_sequence_for<Types...>());
    };
    return operation;
}

} // namespace

const std::vector<Operation> Operations = {
#define OPERATION(name) Describe(#name, name),
#include "Operations.inc"
};

bool Succeeds(const Operation& operation, Call& call) {
    for (size_t at = 0; at < operation.Parameters.size(); ++at) {
        call.Outputs[at].fill(Untouched);
        if (operation.Parameters[at].IsRead) {
            std::memcpy(call.Outputs[at].data(), &call.Values[at], sizeof(uint64_t));
        }
    }
    return operation.Run(call);
}

uint64_t NumberAt(const Call& call, size_t at) {
    uint64_t number = 0;
    std::memcpy(&number, call.Outputs[at].data(), sizeof number);
    return number;
}

std::vector<std::vector<uint64_t>> ArgumentsFor(const World& world, const Operation& operation) {
    std::vector<std::vector<uint64_t>> all = {{}};
    for (const Parameter& parameter : operation.Parameters) {
        std::vector<std::vector<uint64_t>> longer;
        for (std::vector<uint64_t> values : all) {
            values.push_back(0);
            for (const uint64_t choice : ChoicesFor(world, parameter)) {
                values.back() = choice;
                longer.push_back(values);
            }
        }
        all = std::move(longer);
    }
    return all;
}

std::string TextOfString(uint64_t string) {
    char16_t text[TextLimit] = {};
    uint64_t length = 0;
    EXPECT_EQ(SUStringGetUTF16({string}, TextLimit, text, &length), 0);
    return '"' + Utf8FromUtf16({text, length}) + '"';
}

namespace {

// The name of a handle, which is new where it was never seen. The order of the calls is always the same.
std::string NameHandle(World& world, const std::string& kind, uint64_t value) {
    if (value == 0) {
        return "none";
    }
    std::vector<uint64_t>& known = world.Handles[kind];
    const auto place = std::ranges::find(known, value);
    const auto number = place - known.begin() + 1;
    if (place == known.end()) {
        known.push_back(value);
    }
    return kind + std::to_string(number);
}

bool IsUntouched(std::span<const uint8_t> bytes) {
    return std::ranges::all_of(bytes, [](uint8_t byte) { return byte == Untouched; });
}

// What a call has written to one of its outputs.
std::string ShowOutput(World& world, const Parameter& parameter, std::span<const uint8_t> output) {
    std::string text;
    while (output.size() >= parameter.Size && !IsUntouched(output.first(parameter.Size))) {
        uint64_t handle = 0;
        std::memcpy(&handle, output.data(), std::min(parameter.Size, sizeof handle));
        text += " " + (parameter.Show != nullptr ? parameter.Show(output.data())
                                                 : NameHandle(world, parameter.Kind, handle));
        output = output.subspan(parameter.Size);
    }
    return text;
}

void MakeCall(World& world, const Operation& operation, const std::vector<uint64_t>& values) {
    std::string line = operation.Name;
    for (size_t at = 0; at < values.size(); ++at) {
        const Parameter& parameter = operation.Parameters[at];
        line += parameter.IsRead ? " " + NameHandle(world, parameter.Kind, values[at]) : "";
    }
    if (!world.Made.insert(line).second) {
        return;
    }
    Call call = {values, world.Path};
    const bool succeeds = Succeeds(operation, call);
    line += succeeds ? ":" : ": refused";
    for (size_t at = 0; succeeds && at < values.size(); ++at) {
        const Parameter& parameter = operation.Parameters[at];
        if (!parameter.IsRead) {
            line += ShowOutput(world, parameter, call.Outputs[at]);
        } else if (parameter.IsPointer && parameter.Kind == "String") {
            line += " " + TextOfString(values[at]);
        }
    }
    if (call.Returned != 0) {
        line += " " + NameHandle(world, operation.ReturnedKind, call.Returned);
    }
    // Most numbers are zeros: they are left out.
    world.Text += line.ends_with(": 0") ? "" : line + "\n";
}

} // namespace

World WalkModel(const std::u16string& path) {
    World world;
    // Paths have the form that users give them.
    world.Path = Utf8FromUtf16(ProviderTestDirectory()) + "ä texture.png";
    std::ranges::replace(world.Path, '/', '\\');
    SUInitialize();
    ModelHandle model = {0};
    const std::string name = Utf8FromUtf16(path);
    testing::internal::CaptureStderr();
    const bool isOpen = SUModelCreateFromFile(&model, name.c_str()) == 0;
    std::istringstream reports(testing::internal::GetCapturedStderr());
    for (std::string line; std::getline(reports, line);) {
        EXPECT_TRUE(line.starts_with(name + ": ")) << line;
        world.Text += line.substr(name.size() + 2) + "\n";
    }
    EXPECT_EQ(isOpen, model.Value != 0);
    if (!isOpen) {
        return world;
    }
    world.Handles["Model"] = {model.Value};
    for (size_t made = 1; made != world.Made.size();) {
        made = world.Made.size();
        for (const Operation& operation : Operations) {
            const bool isOfWhole =
                operation.Parameters.empty() || operation.Name == "SUModelCreateFromFile";
            if (isOfWhole || operation.Name.ends_with("Release")) {
                continue;
            }
            for (const std::vector<uint64_t>& values : ArgumentsFor(world, operation)) {
                MakeCall(world, operation, values);
            }
        }
    }
    return world;
}
