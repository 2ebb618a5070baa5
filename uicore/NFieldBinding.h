#pragma once

#include <memory>
#include <type_traits>
#include <utility>

#include "uicore/NControlValue.h"

// The link between a control and one field of a record. The frame knows
// fields only through this, so that it needs nothing of the records.
class NFieldBinding {
 public:
  virtual ~NFieldBinding() = default;
  // The field's current value, as the control shows it.
  virtual NControlValue Current() const = 0;
  // The field's default, as the control shows it.
  virtual NControlValue Default() const = 0;
  // Sets the field from a control value; false, field untouched, when the
  // value is of another kind.
  virtual bool Store(const NControlValue& value) = 0;
};

// A binding to any field with Get, Default and Set (the records' typed
// fields), through NControlCodec of its value type.
template <typename Field>
class NTypedFieldBinding final : public NFieldBinding {
 public:
  using Value = std::decay_t<decltype(std::declval<const Field&>().Get())>;
  using Codec = NControlCodec<Value>;

  explicit NTypedFieldBinding(Field& field) : m_field(field) {}
  NControlValue Current() const override { return Codec::To(m_field.Get()); }
  NControlValue Default() const override { return Codec::To(m_field.Default()); }
  bool Store(const NControlValue& value) override {
    Value converted{};
    if (!Codec::From(value, &converted)) return false;
    m_field.Set(std::move(converted));
    return true;
  }

 private:
  Field& m_field;
};

template <typename Field>
std::unique_ptr<NFieldBinding> NBind(Field& field) {
  return std::make_unique<NTypedFieldBinding<Field>>(field);
}

// A setting that is no record's field (a registry value, a file's): the
// page reads it into `value` and, after OK, acts on what was stored there.
template <typename T>
struct NPlainField {
  T value{};
  T defaultValue{};
  const T& Get() const { return value; }
  const T& Default() const { return defaultValue; }
  void Set(T changed) { value = std::move(changed); }
};
