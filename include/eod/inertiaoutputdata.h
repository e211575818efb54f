#ifndef EOD_INERTIAOUTPUTDATA_H
#define EOD_INERTIAOUTPUTDATA_H

// The vehicle's angular rates and accelerations from an inertial sensor. Engine-specific
// data (24 bytes): angular rate x, y, z, then acceleration x, y, z (float each). No setter
// checks its argument.

#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class InertiaOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 32;
    static constexpr char OUTPUT_DATA_ID = 32;

    InertiaOutputData() = default;
    InertiaOutputData(const InertiaOutputData&) = default;
    InertiaOutputData& operator=(const InertiaOutputData&) = default;
    ~InertiaOutputData() override;
    void copyFrom(const InertiaOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    InertiaOutputData* clone() const override;

    float angularRateX() const { return _angular_rate_x; }
    float angularRateY() const { return _angular_rate_y; }
    float angularRateZ() const { return _angular_rate_z; }
    float accelX() const { return _accel_x; }
    float accelY() const { return _accel_y; }
    float accelZ() const { return _accel_z; }
    void setAngularRateX(float rate) { _angular_rate_x = rate; }
    void setAngularRateY(float rate) { _angular_rate_y = rate; }
    void setAngularRateZ(float rate) { _angular_rate_z = rate; }
    void setAccelX(float accel) { _accel_x = accel; }
    void setAccelY(float accel) { _accel_y = accel; }
    void setAccelZ(float accel) { _accel_z = accel; }

    // "X_ANG_RATE", "Y_ANG_RATE", "Z_ANG_RATE", "X_ACCEL", "Y_ACCEL", "Z_ACCEL".
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    float _angular_rate_x = 0.0f;
    float _angular_rate_y = 0.0f;
    float _angular_rate_z = 0.0f;
    float _accel_x = 0.0f;
    float _accel_y = 0.0f;
    float _accel_z = 0.0f;
};

}  // namespace eod
}  // namespace tq

#endif
