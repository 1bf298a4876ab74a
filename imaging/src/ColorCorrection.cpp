#include "ColorCorrection.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <mutex>
#include <new>
#include <set>
#include <shared_mutex>
#include <thread>

namespace qrx {

namespace {

// A coefficient in fixed point, truncated toward zero; kept in a range
// where the sums of products can't overflow.
int32_t Fixed(float aCoefficient) {
    const double scaled = static_cast<double>(aCoefficient) * 1024.0;
    if (!(scaled == scaled)) return 0;
    return static_cast<int32_t>(std::clamp(scaled, -1048576.0, 1048576.0));
}

// Row sums in the required column order: R, B, G for each output.
inline void Rows(const int32_t* m, int64_t r, int64_t g, int64_t b, int32_t* aOut) {
    for (int k = 0; k < 3; ++k)
        aOut[k] = static_cast<int32_t>((m[3 * k] * r + m[3 * k + 1] * b + m[3 * k + 2] * g) >> 10);
}

inline uint32_t Saturate8(int32_t v) {
    if (v & 0xff00) return v < 0 ? 0 : 255;
    return static_cast<uint32_t>(v) & 0xff;
}
inline uint32_t Saturate16(int32_t v, uint32_t aTop) {
    if (v & static_cast<int32_t>(0xffff0000)) return v < 0 ? 0 : aTop;
    return static_cast<uint32_t>(v) & aTop;
}

inline uint32_t Gamma(uint32_t v, const ColorCorrectionPrm& aPrm, uint32_t aTop) {
    const double maximum = aPrm.maximum > 0 ? aPrm.maximum : aTop;
    const double g = maximum * std::pow(std::min(v / maximum, 1.0), aPrm.gamma) + 0.5;
    return static_cast<uint32_t>(std::clamp(g, 0.0, static_cast<double>(aTop)));
}

inline void FloatMatrix(uint32_t& r, uint32_t& g, uint32_t& b, const float* m, uint32_t aTop) {
    const double in[3] = {double(r), double(b), double(g)};
    uint32_t out[3];
    for (int k = 0; k < 3; ++k) {
        const double v = m[3 * k] * in[0] + m[3 * k + 1] * in[1] + m[3 * k + 2] * in[2] + 0.5;
        out[k] = v > 0 ? static_cast<uint32_t>(std::min(v, static_cast<double>(aTop))) : 0;
    }
    r = out[0], g = out[1], b = out[2];
}

// Table rows: v through gamma in single precision, then times each coefficient.
void BuildRows(std::array<int32_t, 9>* aRows, uint32_t aCount, const ColorCorrectionPrm& aPrm) {
    const float maximum = aPrm.maximum > 0 ? aPrm.maximum : float(aCount - 1);
    for (uint32_t i = 0; i < aCount; ++i) {
        const float v = std::pow(std::min(i / maximum, 1.0f), aPrm.gamma);
        const float g = static_cast<float>(static_cast<int>(maximum * v + 0.5f));
        for (int k = 0; k < 9; ++k) {
            const double product = g * (aPrm[k] * 1024.0) + 0.5;
            aRows[i][k] = static_cast<int32_t>(std::clamp(product, -2e9, 2e9));
        }
    }
}

inline void Lookup(const std::array<int32_t, 9>* aRows, uint32_t r, uint32_t g, uint32_t b,
                   int32_t* aOut) {
    for (int k = 0; k < 3; ++k)
        aOut[k] = static_cast<int32_t>(
            (int64_t(aRows[r][3 * k]) + aRows[b][3 * k + 1] + aRows[g][3 * k + 2]) >> 10);
}

} // namespace

void ColorCorrectionMatrix::Apply(uint32_t& r, uint32_t& g, uint32_t& b, uint32_t aTop) const {
    FloatMatrix(r, g, b, prm.matrix, aTop);
}

ColorCorrectionMatrixInt8::ColorCorrectionMatrixInt8(const ColorCorrectionPrm& aPrm)
    : FunctorBase(CorrectionBase::kMatrixInt8) {
    for (int k = 0; k < 9; ++k)
        m[k] = Fixed(aPrm[k]);
}

void ColorCorrectionMatrixInt8::Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const {
    int32_t out[3];
    Rows(m, r, g, b, out);
    r = Saturate8(out[0]), g = Saturate8(out[1]), b = Saturate8(out[2]);
}

void ColorCorrectionMatrixInt8::Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const {
    int32_t out[3];
    Rows(m, r, g, b, out);
    r = Saturate16(out[0], 0xffff), g = Saturate16(out[1], 0xffff), b = Saturate16(out[2], 0xffff);
}

ColorCorrectionMatrixInt16::ColorCorrectionMatrixInt16(const ColorCorrectionPrm& aPrm)
    : FunctorBase(CorrectionBase::kMatrixInt16) {
    for (int k = 0; k < 9; ++k)
        m[k] = Fixed(aPrm[k]);
}

void ColorCorrectionMatrixInt16::Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const {
    int32_t out[3];
    Rows(m, r, g, b, out);
    r = Saturate16(out[0], 0xff), g = Saturate16(out[1], 0xff), b = Saturate16(out[2], 0xff);
}

void ColorCorrectionMatrixInt16::Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const {
    int32_t out[3];
    Rows(m, r, g, b, out);
    r = Saturate16(out[0], 0xffff), g = Saturate16(out[1], 0xffff), b = Saturate16(out[2], 0xffff);
}

void ColorCorrectionGamma::Apply(uint32_t& r, uint32_t& g, uint32_t& b, uint32_t aTop) const {
    r = Gamma(r, prm, aTop), g = Gamma(g, prm, aTop), b = Gamma(b, prm, aTop);
}

void ColorCorrectionGammaMatrix::Apply(uint32_t& r, uint32_t& g, uint32_t& b, uint32_t aTop) const {
    r = Gamma(r, prm, aTop), g = Gamma(g, prm, aTop), b = Gamma(b, prm, aTop);
    FloatMatrix(r, g, b, prm.matrix, aTop);
}

ColorCorrectionGammaMatrixLUT8::ColorCorrectionGammaMatrixLUT8(const ColorCorrectionPrm& aPrm)
    : FunctorBase(CorrectionBase::kGammaMatrixLUT8) {
    BuildRows(rows.data(), 256, aPrm);
}

void ColorCorrectionGammaMatrixLUT8::Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const {
    int32_t out[3];
    Lookup(rows.data(), r, g, b, out);
    r = Saturate8(out[0]), g = Saturate8(out[1]), b = Saturate8(out[2]);
}

void ColorCorrectionGammaMatrixLUT8::Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const {
    r >>= 8, g >>= 8, b >>= 8;
    Apply8(r, g, b);
    r *= 257, g *= 257, b *= 257;
}

ColorCorrectionGammaMatrixLUT16::ColorCorrectionGammaMatrixLUT16(const ColorCorrectionPrm& aPrm)
    : FunctorBase(CorrectionBase::kGammaMatrixLUT16) {
    const float top = std::clamp(aPrm.maximum, 255.0f, 65535.0f);
    rows.resize(static_cast<size_t>(top) + 1);
    BuildRows(rows.data(), static_cast<uint32_t>(rows.size()), aPrm);
}

void ColorCorrectionGammaMatrixLUT16::Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const {
    int32_t out[3];
    Lookup(rows.data(), r, g, b, out);
    r = Saturate8(out[0]), g = Saturate8(out[1]), b = Saturate8(out[2]);
}

void ColorCorrectionGammaMatrixLUT16::Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const {
    const uint32_t top = static_cast<uint32_t>(rows.size() - 1);
    int32_t out[3];
    Lookup(rows.data(), std::min(r, top), std::min(g, top), std::min(b, top), out);
    r = Saturate16(out[0], 0xffff), g = Saturate16(out[1], 0xffff), b = Saturate16(out[2], 0xffff);
}

namespace {

// The live handles. Appliers hold the lock shared, so a handle can't be ended
// under them.
struct save_set {
    std::shared_mutex mutex;
    std::set<const FunctorBase*> handles;

    // Waits at most 100 milliseconds for the lock.
    bool push(FunctorBase* aObject) {
        std::unique_lock<std::shared_mutex> lock(mutex, std::try_to_lock);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
        while (!lock.owns_lock() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            lock.try_lock();
        }
        if (!lock) return false;
        try {
            return handles.insert(aObject).second;
        } catch (...) {
            return false;
        }
    }
    bool pull(FunctorBase* aObject) {
        std::unique_lock<std::shared_mutex> lock(mutex);
        return handles.erase(aObject) == 1;
    }
};

save_set& g_ColorCorrectionHandles() {
    static save_set* handles = new save_set;
    return *handles;
}

void Delete(FunctorBase* aObject) {
    VisitCorrection(*aObject, [](const auto& aReal) { delete &aReal; });
}

template <class T> FunctorBase* Make(const ColorCorrectionPrm& aPrm) {
    T* object = new (std::nothrow) T(aPrm);
    if (!object) return nullptr;
    if (!g_ColorCorrectionHandles().push(object)) {
        delete object;
        return nullptr;
    }
    return object;
}

ColorCorrectionPrm Prm(const float* aMatrix, float aGamma, float aMaximum) {
    ColorCorrectionPrm prm;
    // The identity for the column order of the rows.
    static constexpr float kIdentity[9] = {1, 0, 0, 0, 0, 1, 0, 1, 0};
    std::copy_n(aMatrix ? aMatrix : kIdentity, 9, prm.matrix);
    prm.gamma = aGamma;
    prm.maximum = aMaximum;
    return prm;
}

} // namespace

FunctorBase* createMatrixCorrectionHandle(const float* aMatrix) {
    return aMatrix ? Make<ColorCorrectionMatrix>(Prm(aMatrix, 1, 255)) : nullptr;
}
FunctorBase* createMatrixInt8CorrectionHandle(const float* aMatrix) {
    return aMatrix ? Make<ColorCorrectionMatrixInt8>(Prm(aMatrix, 1, 255)) : nullptr;
}
FunctorBase* createMatrixInt16CorrectionHandle(const float* aMatrix) {
    return aMatrix ? Make<ColorCorrectionMatrixInt16>(Prm(aMatrix, 1, 65535)) : nullptr;
}
FunctorBase* createGammaCorrectionHandle(float aGamma, float aMaximum) {
    return Make<ColorCorrectionGamma>(Prm(nullptr, aGamma, aMaximum));
}
FunctorBase* createGammaMatrixCorrectionHandle(const float* aMatrix, float aGamma, float aMaximum) {
    return aMatrix ? Make<ColorCorrectionGammaMatrix>(Prm(aMatrix, aGamma, aMaximum)) : nullptr;
}
FunctorBase* createGammaMatrixLUT8CorrectionHandle(const float* aMatrix, float aGamma,
                                                   float aMaximum) {
    return aMatrix ? Make<ColorCorrectionGammaMatrixLUT8>(Prm(aMatrix, aGamma, aMaximum)) : nullptr;
}
FunctorBase* createGammaMatrixUT16CorrectionHandle(const float* aMatrix, float aGamma,
                                                   float aMaximum) {
    return aMatrix ? Make<ColorCorrectionGammaMatrixLUT16>(Prm(aMatrix, aGamma, aMaximum))
                   : nullptr;
}
FunctorBase* createGammaLUT8CorrectionHandle(float aGamma, float aMaximum) {
    return Make<ColorCorrectionGammaMatrixLUT8>(Prm(nullptr, aGamma, aMaximum));
}
FunctorBase* createGammaLUT16CorrectionHandle(float aGamma, float aMaximum) {
    return Make<ColorCorrectionGammaMatrixLUT16>(Prm(nullptr, aGamma, aMaximum));
}

int destroyCorrectionHandle(FunctorBase* aObject) {
    if (!aObject || !g_ColorCorrectionHandles().pull(aObject)) return -1;
    Delete(aObject);
    return 0;
}

bool WithLiveHandle(const void* aHandle, void (*aBody)(const FunctorBase&, void*), void* aContext) {
    save_set& set = g_ColorCorrectionHandles();
    std::shared_lock<std::shared_mutex> lock(set.mutex);
    auto it = set.handles.find(static_cast<const FunctorBase*>(aHandle));
    if (it == set.handles.end()) return false;
    aBody(**it, aContext);
    return true;
}

} // namespace qrx
