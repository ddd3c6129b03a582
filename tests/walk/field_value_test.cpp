#include "walk_test.h"

namespace {

class FieldValueTest : public WalkTest {
 protected:
  FieldValueTest() { connectTensorSlots(componentSlots()); }

  double read(const memory::Value& value, const ComponentFlags& present = {}) {
    return readFieldValue(odb_FieldValue(value), out_, {}, present, "", false);
  }
  double slot(std::size_t c) const { return *componentSlots().tensor[c]; }

  template <class Action>
  std::string errorOf(Action&& action) {
    try {
      action();
    } catch (const odb_Exception& error) {
      EXPECT_EQ(error.GetCode(), 6);
      return error.UserReport().cStr();
    }
    return "no error";
  }
};

memory::Value doubleTensor(int type) {
  memory::Value value = tensorValue(type, {}, 9);
  value.precision = odb_Enum::doublePrecision;
  value.doubles = {1, 2, 3, 4, 5, 6};
  return value;
}

TEST_F(FieldValueTest, AScalarIsItsNumberInEitherPrecision) {
  EXPECT_EQ(read(scalarValue(2.5F)), 2.5);
  memory::Value value;
  value.precision = odb_Enum::doublePrecision;
  value.doubles = {1.0 / 3.0};
  EXPECT_EQ(read(value), 1.0 / 3.0);
}

TEST_F(FieldValueTest, AVectorIsItsMagnitudeAndFillsTheSlotsWhenComponentsAreWanted) {
  componentSlots().vector = {7, 7, 7};
  EXPECT_EQ(read(vectorValue(3, 4, 0, 5)), 5.0);
  EXPECT_EQ(componentSlots().vector[0], 7.0);
  switches().fieldComponents = true;
  EXPECT_EQ(read(vectorValue(3, 4, 0, 5)), 5.0);
  EXPECT_EQ(componentSlots().vector, (std::array<double, 3>{3, 4, 0}));
}

TEST_F(FieldValueTest, AVectorOfTwoNumbersReadsZeroForTheThird) {
  switches().fieldComponents = true;
  memory::Value value = vectorValue(1, 2, 0, 0);
  value.floats = {1, 2};
  read(value);
  EXPECT_EQ(componentSlots().vector, (std::array<double, 3>{1, 2, 0}));
}

TEST_F(FieldValueTest, APlaneTensorFillsItsFourSlotsAndLeavesTheOthers) {
  for (double* slot : componentSlots().tensor) *slot = 99;
  EXPECT_EQ(read(tensorValue(odb_Enum::tensor2dPlanar, {1, 2, 3, 4}, 8), {true, true, true, true, false, false}), 8.0);
  EXPECT_EQ(slot(0), 1.0);
  EXPECT_EQ(slot(1), 2.0);
  EXPECT_EQ(slot(2), 3.0);
  EXPECT_EQ(slot(3), 4.0);
  EXPECT_EQ(slot(4), 99.0);
  EXPECT_EQ(slot(5), 99.0);
}

TEST_F(FieldValueTest, OnlyTheFullTensorLeavesItsComponentsAloneWhenTheyAreNotWanted) {
  for (double* slot : componentSlots().tensor) *slot = 99;
  read(tensorValue(odb_Enum::tensor3dFull, {1, 2, 3, 4, 5, 6}, 8), {true, true, true, true, true, true});
  EXPECT_EQ(slot(0), 99.0);
  read(tensorValue(odb_Enum::tensor3dSurface, {1, 2, 4}, 8), {true, true, false, true, false, false});
  EXPECT_EQ(slot(0), 1.0);
  EXPECT_EQ(slot(3), 4.0);
}

TEST_F(FieldValueTest, AnyOtherTypeIsZero) {
  EXPECT_EQ(read(tensorValue(4, {5}, 8)), 0.0);
  EXPECT_EQ(read(tensorValue(10, {5}, 8)), 0.0);
}

TEST_F(FieldValueTest, TheWrongPrecisionIsRefusedWithItsMessage) {
  EXPECT_EQ(errorOf([] { data(odb_FieldValue(doubleTensor(5))); }), "Data is double precision.  Use dataDouble()");
  EXPECT_EQ(errorOf([] { dataDouble(odb_FieldValue(scalarValue(1))); }), "Data is single precision.  Use data()");
}

TEST_F(FieldValueTest, ARefusalNamesItsAccessor) {
  const auto placeOf = [](auto&& action) {
    try {
      action();
    } catch (const odb_Exception& error) {
      return std::string(error.file()) + ":" + std::to_string(error.line());
    }
    return std::string("no error");
  };
  EXPECT_EQ(placeOf([] { data(odb_FieldValue(doubleTensor(5))); }), "odb_FieldValue.h:92");
  EXPECT_EQ(placeOf([] { dataDouble(odb_FieldValue(scalarValue(1))); }), "odb_FieldValue.h:110");
}

TEST_F(FieldValueTest, AnyPrecisionButOneIsReadInSingleAndAnyButZeroInDouble) {
  memory::Value value = scalarValue(1.5F);
  value.doubles = {2.5};
  value.precision = 2;
  EXPECT_EQ(data(odb_FieldValue(value)).constGet(0), 1.5F);
  EXPECT_EQ(dataDouble(odb_FieldValue(value)).constGet(0), 2.5);
  EXPECT_EQ(read(value), 2.5);
}

TEST_F(FieldValueTest, ComponentsAreReadInSinglePrecisionAloneSoDoubleOnesAreRefused) {
  const ComponentFlags all = {true, true, true, true, true, true};
  const std::string refused = "Data is double precision.  Use dataDouble()";
  EXPECT_EQ(errorOf([&] { read(doubleTensor(6), all); }), refused);
  EXPECT_EQ(errorOf([&] { read(doubleTensor(9), {true, false, false, false, false, false}); }), refused);
  EXPECT_EQ(read(doubleTensor(6), {}), 9.0);
  EXPECT_EQ(read(doubleTensor(5), all), 9.0);
  switches().fieldComponents = true;
  EXPECT_EQ(errorOf([&] { read(doubleTensor(5), all); }), refused);
  memory::Value vector = doubleTensor(odb_Enum::vector);
  EXPECT_EQ(errorOf([&] { read(vector); }), refused);
  switches().fieldComponents = false;
  vector.magnitude = 3;
  EXPECT_EQ(read(vector), 3.0);
}

TEST_F(FieldValueTest, EachSlotSelectsItsInvariant) {
  memory::Value value;
  value.tresca = 1;
  value.press = 2;
  value.inv3 = 3;
  value.maxPrincipal = 4;
  value.midPrincipal = 5;
  value.minPrincipal = 6;
  value.maxInPlanePrincipal = 7;
  value.minInPlanePrincipal = 8;
  value.outOfPlanePrincipal = 9;
  for (int slot = 0; slot < 9; ++slot) EXPECT_EQ(selectInvariant(odb_FieldValue(value), slot), slot + 1.0);
}

TEST_F(FieldValueTest, AnyOtherSlotIsTheLowestDouble) {
  EXPECT_EQ(selectInvariant(odb_FieldValue(), 9), -1.7976931348623157e+308);
  EXPECT_EQ(selectInvariant(odb_FieldValue(), -1), -1.7976931348623157e+308);
}

}  // namespace
