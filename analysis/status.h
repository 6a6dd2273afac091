// Status codes returned by every numeric routine.
//
// 0 is success, a negative value is an error whose magnitude is the code of
// its message text, and a positive value is a warning that a caller may turn
// into an output (callers treat any value >= 0 as success).
#pragma once

#include <cstdint>

namespace vn {

using AnalysisStatus = std::int32_t;

enum : AnalysisStatus {
    kOk = 0,

    // Warnings (positive, never raised as errors).
    kWarnRankDeficient = 20001,

    // Conditions on the arguments and failures of the numeric routines.
    kErrNoMemory = -20001,              // not enough memory for the routine
    kErrSizesDiffer = -20002,           // input sequences must be the same size
    kErrSamplesBelowOne = -20003,       // number of samples must be > 0
    kErrSamplesNegative = -20004,       // number of samples must be >= 0
    kErrSamplesBelowTwo = -20006,
    kErrSamplesBelowThree = -20007,
    kErrWrongCount = -20008,            // wrong number of data values / dimensions
    kErrNotPowerOfTwo = -20009,
    kErrTransformTooLarge = -20010,
    kErrDutyCycle = -20011,
    kErrCycles = -20012,
    kErrWidthRange = -20013,            // 0 < width < samples
    kErrDelayWidth = -20014,            // 0 <= delay + width < samples
    kErrDtNegative = -20015,
    kErrDtNotPositive = -20016,
    kErrIndexRange = -20017,            // 0 <= index < samples
    kErrIndexLength = -20018,           // 0 <= index + length < samples
    kErrUpperBelowLower = -20019,
    kErrCutoff = -20020,
    kErrOrderNotPositive = -20021,
    kErrDecimatingFactor = -20022,
    kErrBandEdges = -20023,
    kErrRipple = -20024,
    kErrAttenuation = -20025,
    kErrWidthNotPositive = -20026,
    kErrFinalValue = -20027,
    kErrAttenuationBelowRipple = -20028,
    kErrStepSize = -20029,
    kErrLeak = -20030,
    kErrFilterDesign = -20031,
    kErrFilterRank = -20032,
    kErrCoefficientsOdd = -20033,
    kErrCoefficientsEven = -20034,
    kErrZeroStdDev = -20035,
    kErrYSign = -20036,
    kErrPointsNotAboveOrder = -20037,
    kErrIntervals = -20038,
    kErrInnerDimensions = -20039,
    kErrNotSquare = -20040,
    kErrSingular = -20041,
    kErrLevelCount = -20042,
    kErrLevelRange = -20043,
    kErrEmptyLevel = -20044,
    kErrTotalPoints = -20045,
    kErrFOverflow = -20046,
    kErrUnbalanced = -20047,
    kErrRandomEffect = -20048,
    kErrXNotDistinct = -20049,
    kErrPole = -20050,
    kErrFirstColumnNotOne = -20051,
    kErrDegreesOfFreedom = -20052,
    kErrProbability = -20053,           // 0 < p < 1
    kErrProbabilityHalfOpen = -20054,   // 0 <= p < 1
    kErrCategories = -20055,
    kErrNegativeInTable = -20056,
    kErrBetaParameter = -20057,
    kErrDimensions = -20058,
    kErrNegativeNumber = -20059,
    kErrDivideByZero = -20060,
    kErrInvalidSelection = -20061,
    kErrMaxIterations = -20062,
    kErrPolynomial = -20063,
    kErrStateNotInitialized = -20064,
    kErrAllZero = -20065,
    kErrIirStructure = -20066,
    kErrTimeIncrementSmall = -20080,
    kErrDnNotPositive = -20081,
    kErrTimeIncrementAboveDm = -20082,
    kErrWindowLength4 = -20083,
    kErrTimeIncrementLarge = -20084,
    kErrHilbertSize = -20085,
    kErrWindowLength2 = -20086,
    kErrTopNotAboveBase = -20101,
    kErrShiftRange = -20102,
    kErrOrderNotPositive2 = -20103,
    kErrAlgorithmFailure = -20999,

    // Failures of the automation frame.
    kErrUnexpected = -30000,
    kErrInvalidValue = -30002,
    kErrInvalidVariantType = -30003,
    kErrFrameDivideByZero = -30004,
    kErrImaginary = -30005,
    kErrOverflow = -30006,
    kErrFrameOutOfMemory = -30007,
    kErrCannotReconfigure = -30009,
    kErrNotAppropriate = -30010,
    kErrDataType = -30100,
    kErrArrayLock = -30101,
    kErrArrayUnlock = -30102,
    kErrNotAnArray = -30103,
    kErrMixedTypes = -30104,
};

}  // namespace vn
