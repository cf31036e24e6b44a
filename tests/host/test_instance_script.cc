// Statements of instances: geometries that effects draw for their fields.

#include "host/script/instance_script.h"

#include <gtest/gtest.h>

namespace zol::host {
namespace {

class InstanceScriptTest : public testing::Test {
protected:
  InstanceScriptTest() {
    effect.fields.resize(2);
    effect.fields[1].type = FieldType::geometry;
  }
  /// Ends of the segments of field 1, and the handles between them.
  std::vector<std::vector<double>> segments() {
    std::vector<std::vector<double>> found;
    (*parameters.geometries.get(1, 0))
        ->curves(0, false, &found,
                 [](void *user, const double *P0, const double *P1, const double *H0, const double *H1) {
                   static_cast<decltype(found) *>(user)->push_back(
                       {P0[0], P0[1], P1[0], P1[1], H0[0], H0[1], H1[0], H1[1]});
                   return 1;
                 });
    return found;
  }

  Effect effect;
  Parameters parameters;
  InstanceScript script{effect, parameters};
};

TEST_F(InstanceScriptTest, DrawsAGeometryForAField) {
  const char *const statements[] = {
      "ZoGeo *gg = ZoGeoContourCreate( ZoClipFrom( ZoCurrentClip ) );",
      "ZoGeoMove( gg, 100.5, 50 );",
      "ZoGeoContourVertexAdd( gg, 10.000000, 0.000000, 0.0, -3.0, 0.0, 4.0 );",
      "ZoGeoContourVertexAdd( gg, -10.0, 20.0, 5.0, 6.0, -7.0, -8.0 );",
  };
  for (const char *statement : statements)
    ASSERT_EQ(script.execute(statement), 1) << statement;
  EXPECT_EQ(script.execute("ZoParamSet( ZoCurrentClip, 1, 0, gg ); ZoGeoSetPrivate( gg );"), 1);
  const auto open = segments();
  ASSERT_EQ(open.size(), 1U);
  const std::vector<double> expected = {110.5, 50, 90.5, 70, 0, 4, 5, 6};
  for (size_t i = 0; i < 8; ++i)
    EXPECT_NEAR(open[0][i], expected[i], 0.001) << i;
  EXPECT_EQ(script.execute("ZoGeoContourClose( gg ); ZoParamSet( ZoCurrentClip, 0x1, 0, gg );"), 1);
  const auto closed = segments();
  ASSERT_EQ(closed.size(), 2U);
  EXPECT_EQ(closed[1][4], -7);
  EXPECT_EQ(closed[1][7], -3);
}

TEST_F(InstanceScriptTest, AnswersNothingToWhatItDoesNotUnderstand) {
  ASSERT_EQ(script.execute("ZoGeo *gg = ZoGeoContourCreate( ZoClipFrom( ZoCurrentClip ) );"), 1);
  for (const char *statement :
       {"ZoGeoMove( gg, 1 );", "ZoGeoMove( hh, 1, 2 );", "ZoGeoMove( gg, 1, 2, 3 );",
        "ZoGeoMove( gg, gg, 2 );", "ZoParamSet( ZoCurrentClip, 0, 0, gg );",
        "ZoParamSet( ZoCurrentClip, 2, 0, gg );", "ZoParamSet( ZoCurrentClip, 1, -1, gg );",
        "ZoParamSet( gg, 1, 0, gg );", "ZoGeoUnknown( gg );", "ZoGeo gg;", "ZoGeo *gg;", "ZoGeo *gg = 5;",
        "ZoEffect *gg = gg;", "\"gg\";", "ZoGeoMove("})
    EXPECT_EQ(script.execute(statement), 0) << statement;
  EXPECT_EQ(script.execute("ZoParamSet( ZoCurrentClip, 1, 0, gg );"), 1); // without a segment
  EXPECT_TRUE(segments().empty());
}

} // namespace
} // namespace zol::host
