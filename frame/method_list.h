// The methods of the five controls, in dispatch order.
//
// This file is the single source of the automation contract: the type
// library's IDL is produced from it by the C preprocessor, and the controls'
// dispatch tables are built from it in C++. A row is
//   M(dispid, Name, ReturnKind, "help string", parameters...)
// with ReturnKind one of VARIANT, VOID, R8, I4 and each parameter written as
// ARG_IN(name) (a variant by value), ARG_OUT(name) (a pointer to a variant, written
// by the method; in/out where the method also reads it) or ARG_OPT(name) (an
// optional variant by value; only at the end of a list).
// No includes and no C++ here: the IDL template includes this file too.

#define VN_ARRAY_METHODS(M) \
    M(1, ArrayDims, I4, "Returns the number of dimensions of an array.", ARG_IN(x)) \
    M(2, ArrayDimSizes, VARIANT, "Returns the size of each dimension of an array.", ARG_IN(x)) \
    M(3, IndexArray, VARIANT, "Returns the element of an array at the given indices.", ARG_IN(x), ARG_IN(Index1), ARG_OPT(Index2)) \
    M(4, Interleave1D, VARIANT, "Interleaves the elements of two one-dimensional arrays.", ARG_IN(x), ARG_IN(y)) \
    M(5, MaxArray, R8, "Returns the largest element of an array.", ARG_IN(InputArray)) \
    M(6, MinArray, R8, "Returns the smallest element of an array.", ARG_IN(InputArray)) \
    M(7, SubsetArray, VARIANT, "Returns a part of a one- or two-dimensional array.", ARG_IN(x), ARG_IN(Index1), ARG_IN(Length1), ARG_OPT(Index2), ARG_OPT(Length2)) \
    M(8, AddArray, VARIANT, "Adds two arrays element by element.", ARG_IN(x), ARG_IN(y)) \
    M(9, BuildArray, VARIANT, "Builds an array from two scalars or arrays.", ARG_IN(x), ARG_IN(y)) \
    M(10, MaxMin1D, VOID, "Finds the largest and smallest elements of an array and their indices.", ARG_IN(x), ARG_OUT(max), ARG_OUT(imax), ARG_OUT(min), ARG_OUT(imin)) \
    M(11, Subset1D, VARIANT, "Returns Length elements of a one-dimensional array starting at Index.", ARG_IN(x), ARG_IN(Index), ARG_IN(Length)) \
    M(12, SubArray, VARIANT, "Subtracts two arrays element by element.", ARG_IN(x), ARG_IN(y)) \
    M(13, MulArray, VARIANT, "Multiplies two arrays element by element.", ARG_IN(x), ARG_IN(y)) \
    M(14, DivArray, VARIANT, "Divides two arrays element by element.", ARG_IN(x), ARG_IN(y)) \
    M(15, AbsArray, VARIANT, "Returns the absolute values of the elements of an array.", ARG_IN(x)) \
    M(16, NegArray, VARIANT, "Negates the elements of an array.", ARG_IN(x)) \
    M(17, LinEvArray, VARIANT, "Evaluates a*x + b for every element of an array.", ARG_IN(x), ARG_IN(a), ARG_IN(b)) \
    M(18, PolyEvArray, VARIANT, "Evaluates a polynomial with ascending coefficients at every element of an array.", ARG_IN(x), ARG_IN(Coeffs)) \
    M(19, ScaleArray, VARIANT, "Scales an array to the range [-1, 1].", ARG_IN(x), ARG_OUT(Offset), ARG_OUT(ScaleConst)) \
    M(20, QScaleArray, VARIANT, "Divides an array by its largest absolute value.", ARG_IN(x), ARG_OUT(ScaleConst)) \
    M(21, ClipArray, VARIANT, "Limits the elements of an array to [Lower, Upper].", ARG_IN(x), ARG_IN(Upper), ARG_IN(Lower)) \
    M(22, CopyArray, VARIANT, "Returns a copy of an array as doubles.", ARG_IN(x)) \
    M(23, NormalizeArray, VARIANT, "Normalizes an array to zero mean and unit standard deviation.", ARG_IN(x), ARG_OUT(ave), ARG_OUT(sDev)) \
    M(24, Reverse1D, VARIANT, "Reverses the order of the elements of a one-dimensional array.", ARG_IN(x)) \
    M(25, Shift1D, VARIANT, "Shifts the elements of a one-dimensional array, filling with zeros.", ARG_IN(x), ARG_IN(Shifts)) \
    M(26, Sort1D, VARIANT, "Sorts a one-dimensional array (Direction 0 ascending, otherwise descending).", ARG_IN(x), ARG_IN(Direction)) \
    M(27, Transpose2D, VARIANT, "Transposes a two-dimensional array.", ARG_IN(x)) \
    M(28, SumArray, VARIANT, "Returns the sum of the elements of an array.", ARG_IN(x)) \
    M(29, ProdArray, VARIANT, "Returns the product of the elements of an array.", ARG_IN(x)) \
    M(30, ReshapeArray, VARIANT, "Returns an array of new dimension sizes filled with the elements of an array.", ARG_IN(x), ARG_IN(Dim1), ARG_OPT(Dim2)) \
    M(31, ClearArray, VOID, "Sets every element of an array to zero.", ARG_OUT(x)) \
    M(32, SetArray, VOID, "Sets every element of an array to a.", ARG_OUT(x), ARG_IN(a)) \
    M(33, MaxMin2D, VOID, "Finds the largest and smallest elements of a two-dimensional array and their indices.", ARG_IN(x), ARG_OUT(max), ARG_OUT(imax), ARG_OUT(jmax), ARG_OUT(min), ARG_OUT(imin), ARG_OUT(jmin)) \
    M(34, SearchArray, VARIANT, "Returns the index of the first element equal to Element, or -1.", ARG_IN(x), ARG_IN(Element), ARG_OPT(StartIndex)) \
    M(35, ConcatenateArray, VARIANT, "Concatenates two arrays along their first dimension.", ARG_IN(x), ARG_IN(y)) \
    M(-552, AboutBox, VOID, "Shows the about box.")

#define VN_COMPLEX_METHODS(M) \
    M(1, CxAddArray, VOID, "Adds two complex arrays element by element.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(2, CxSubArray, VOID, "Subtracts two complex arrays element by element.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(3, CxMulArray, VOID, "Multiplies two complex arrays element by element.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(4, CxDivArray, VOID, "Divides two complex arrays element by element.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(5, CxAdd, VOID, "Adds two complex numbers.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(6, CxSub, VOID, "Subtracts two complex numbers.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(7, CxMul, VOID, "Multiplies two complex numbers.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(8, CxDiv, VOID, "Divides two complex numbers.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(9, CxRecip, VOID, "Returns the reciprocal of a complex number.", ARG_IN(xr), ARG_IN(xi), ARG_OUT(yr), ARG_OUT(yi)) \
    M(10, CxSqrt, VOID, "Returns the principal square root of a complex number.", ARG_IN(xr), ARG_IN(xi), ARG_OUT(yr), ARG_OUT(yi)) \
    M(11, CxLog, VOID, "Returns the base-10 logarithm of a complex number.", ARG_IN(xr), ARG_IN(xi), ARG_OUT(yr), ARG_OUT(yi)) \
    M(12, CxLn, VOID, "Returns the natural logarithm of a complex number.", ARG_IN(xr), ARG_IN(xi), ARG_OUT(yr), ARG_OUT(yi)) \
    M(13, CxExp, VOID, "Returns the exponential of a complex number.", ARG_IN(xr), ARG_IN(xi), ARG_OUT(yr), ARG_OUT(yi)) \
    M(14, CxPow, VOID, "Raises a complex number to a real power.", ARG_IN(xr), ARG_IN(xi), ARG_IN(a), ARG_OUT(yr), ARG_OUT(yi)) \
    M(15, ToPolar, VOID, "Converts a complex number from rectangular to polar form.", ARG_IN(x), ARG_IN(y), ARG_OUT(Mag), ARG_OUT(Phase)) \
    M(16, ToRect, VOID, "Converts a complex number from polar to rectangular form.", ARG_IN(Mag), ARG_IN(Phase), ARG_OUT(x), ARG_OUT(y)) \
    M(17, ToPolarArray, VOID, "Converts complex arrays from rectangular to polar form.", ARG_IN(x), ARG_IN(y), ARG_OUT(Mag), ARG_OUT(Phase)) \
    M(18, ToRectArray, VOID, "Converts complex arrays from polar to rectangular form.", ARG_IN(Mag), ARG_IN(Phase), ARG_OUT(x), ARG_OUT(y)) \
    M(19, CxLinEvArray, VOID, "Evaluates a*x + b for every element of a complex array.", ARG_IN(xr), ARG_IN(xi), ARG_IN(ar), ARG_IN(ai), ARG_IN(br), ARG_IN(bi), ARG_OUT(yr), ARG_OUT(yi)) \
    M(20, CxCholesky, VOID, "Upper triangular R with R^H*R = A for a Hermitian positive definite matrix.", ARG_IN(ar), ARG_IN(ai), ARG_OUT(Rr), ARG_OUT(Ri)) \
    M(21, CxEigenValueVector, VOID, "Eigenvalues and eigenvectors of a complex square matrix.", ARG_IN(ar), ARG_IN(ai), ARG_OUT(ValueRe), ARG_OUT(ValueIm), ARG_OUT(VectorRe), ARG_OUT(VectorIm)) \
    M(22, CxGenInvMatrix, VOID, "Inverse of a complex square matrix of the given MatrixType.", ARG_IN(ar), ARG_IN(ai), ARG_IN(MatrixType), ARG_OUT(br), ARG_OUT(bi)) \
    M(23, CxMatrixMul, VOID, "Product of two complex matrices, or of a matrix and a vector.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(24, CxMatrixRank, VARIANT, "Rank of a complex matrix.", ARG_IN(ar), ARG_IN(ai)) \
    M(25, CxGenLinEqs, VOID, "Solves the complex linear system A*x = y for a matrix of the given MatrixType.", ARG_IN(ar), ARG_IN(ai), ARG_IN(yr), ARG_IN(yi), ARG_IN(MatrixType), ARG_OUT(br), ARG_OUT(bi), ARG_OUT(Warning)) \
    M(26, CxDeterminant, VOID, "Determinant of a complex square matrix.", ARG_IN(ar), ARG_IN(ai), ARG_OUT(dr), ARG_OUT(di)) \
    M(27, CxDotProduct, VOID, "Dot product of two complex vectors.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(28, CxConditionNumber, VARIANT, "Condition number of a complex matrix in the given norm.", ARG_IN(ar), ARG_IN(ai), ARG_IN(NormType)) \
    M(29, CxOuterProduct, VOID, "Outer product of two complex vectors.", ARG_IN(xr), ARG_IN(xi), ARG_IN(yr), ARG_IN(yi), ARG_OUT(zr), ARG_OUT(zi)) \
    M(30, CxTranspose, VOID, "Transpose of a complex matrix.", ARG_IN(ar), ARG_IN(ai), ARG_OUT(br), ARG_OUT(bi)) \
    M(31, CxSVD, VOID, "Singular value decomposition A = U*diag(s)*V^H of a complex matrix.", ARG_IN(ar), ARG_IN(ai), ARG_OUT(ur), ARG_OUT(ui), ARG_OUT(s), ARG_OUT(vr), ARG_OUT(vi)) \
    M(32, CxTrace, VOID, "Trace of a complex square matrix.", ARG_IN(ar), ARG_IN(ai), ARG_OUT(tr), ARG_OUT(ti)) \
    M(33, CxCheckPosDef, VARIANT, "Returns 1 when a complex matrix is Hermitian positive definite, else 0.", ARG_IN(ar), ARG_IN(ai)) \
    M(34, CxSpecialMatrix, VOID, "Builds a complex identity, diagonal, Toeplitz, Vandermonde or companion matrix.", ARG_IN(MatrixType), ARG_IN(MatrixSize), ARG_IN(Array1r), ARG_IN(Array1i), ARG_IN(Array2r), ARG_IN(Array2i), ARG_OUT(br), ARG_OUT(bi)) \
    M(35, CxQR, VOID, "QR factorisation A = Q*R of a complex matrix.", ARG_IN(ar), ARG_IN(ai), ARG_OUT(Qr), ARG_OUT(Qi), ARG_OUT(Rr), ARG_OUT(Ri)) \
    M(36, CxLU, VOID, "LU factorisation of a complex square matrix with partial pivoting.", ARG_IN(ar), ARG_IN(ai), ARG_OUT(br), ARG_OUT(bi), ARG_OUT(p), ARG_OUT(Sign)) \
    M(37, CxMatrixNorm, VARIANT, "Norm of a complex matrix.", ARG_IN(ar), ARG_IN(ai), ARG_IN(NormType)) \
    M(38, CxPseudoInverse, VOID, "Moore-Penrose pseudo-inverse of a complex matrix.", ARG_IN(ar), ARG_IN(ai), ARG_OUT(br), ARG_OUT(bi)) \
    M(39, CxSVDS, VOID, "Singular values of a complex matrix in decreasing order.", ARG_IN(ar), ARG_IN(ai), ARG_OUT(s)) \
    M(-552, AboutBox, VOID, "Shows the about box.")

#define VN_MATRIX_METHODS(M) \
    M(1, DotProduct, VARIANT, "Dot product of two vectors.", ARG_IN(x), ARG_IN(y)) \
    M(2, MatrixMul, VARIANT, "Product of two matrices, or of a matrix and a vector.", ARG_IN(x), ARG_IN(y)) \
    M(3, InvMatrix, VARIANT, "Inverse of a square matrix.", ARG_IN(x)) \
    M(4, Transpose, VARIANT, "Transpose of a matrix.", ARG_IN(x)) \
    M(5, Determinant, VARIANT, "Determinant of a square matrix.", ARG_IN(x)) \
    M(6, Trace, VARIANT, "Trace of a square matrix.", ARG_IN(x)) \
    M(7, LinEqs, VARIANT, "Solves the linear system a*x = y.", ARG_IN(a), ARG_IN(y)) \
    M(8, LU, VOID, "LU factorisation with partial pivoting.", ARG_IN(a), ARG_OUT(b), ARG_OUT(p), ARG_OUT(Sign)) \
    M(9, ForwSub, VOID, "Forward substitution with the unit lower factor of an LU factorisation.", ARG_IN(a), ARG_IN(y), ARG_IN(p), ARG_OUT(x)) \
    M(10, BackSub, VARIANT, "Back substitution with an upper triangular matrix.", ARG_IN(a), ARG_IN(y)) \
    M(11, Qr, VOID, "QR factorisation A = Q*R (economy form).", ARG_IN(a), ARG_OUT(q), ARG_OUT(r)) \
    M(12, SVD, VOID, "Singular value decomposition A = U*diag(s)*V' (thin form).", ARG_IN(a), ARG_OUT(u), ARG_OUT(s), ARG_OUT(v)) \
    M(13, SVDS, VOID, "Singular values in decreasing order.", ARG_IN(a), ARG_OUT(s)) \
    M(14, Cholesky, VARIANT, "Upper triangular R with R'*R = a for a symmetric positive definite matrix.", ARG_IN(a)) \
    M(15, GenLinEqs, VOID, "Solves a*x = y for a matrix of the given MatrixType.", ARG_IN(a), ARG_IN(y), ARG_IN(MatrixType), ARG_OUT(b), ARG_OUT(Warning)) \
    M(16, GenInvMatrix, VARIANT, "Inverse of a square matrix of the given MatrixType.", ARG_IN(a), ARG_IN(MatrixType)) \
    M(17, PseudoInverse, VARIANT, "Moore-Penrose pseudo-inverse of a matrix.", ARG_IN(a)) \
    M(18, GenEigenValueVector, VOID, "Eigenvalues and eigenvectors of a general square matrix.", ARG_IN(a), ARG_OUT(ValueRe), ARG_OUT(ValueIm), ARG_OUT(VectorRe), ARG_OUT(VectorIm)) \
    M(19, SymEigenValueVector, VOID, "Eigenvalues and eigenvectors of a symmetric matrix.", ARG_IN(a), ARG_OUT(Values), ARG_OUT(Vectors)) \
    M(20, OuterProduct, VARIANT, "Outer product of two vectors.", ARG_IN(x), ARG_IN(y)) \
    M(21, GenDeterminant, VARIANT, "Determinant of a square matrix of the given MatrixType.", ARG_IN(a), ARG_IN(MatrixType)) \
    M(22, ConditionNumber, VARIANT, "Condition number of a matrix in the given norm.", ARG_IN(a), ARG_IN(NormType)) \
    M(23, MatrixRank, VARIANT, "Rank of a matrix.", ARG_IN(a)) \
    M(24, MatrixNorm, VARIANT, "Norm of a matrix.", ARG_IN(a), ARG_IN(NormType)) \
    M(25, SpecialMatrix, VARIANT, "Builds an identity, diagonal, Toeplitz, Vandermonde or companion matrix.", ARG_IN(MatrixType), ARG_IN(MatrixSize), ARG_IN(Array1), ARG_IN(Array2)) \
    M(26, CheckPosdef, VARIANT, "Returns 1 when a matrix is positive definite, else 0.", ARG_IN(a)) \
    M(-552, AboutBox, VOID, "Shows the about box.")

#define VN_STAT_METHODS(M) \
    M(1, Mean, VARIANT, "Mean of the samples.", ARG_IN(x)) \
    M(2, StdDev, VOID, "Mean and standard deviation of the samples.", ARG_IN(x), ARG_OUT(MeanValue), ARG_OUT(StdDev)) \
    M(3, Variance, VOID, "Mean and variance of the samples.", ARG_IN(x), ARG_OUT(MeanValue), ARG_OUT(Variance)) \
    M(4, RMS, VARIANT, "Root mean square of the samples.", ARG_IN(x)) \
    M(5, Moment, VARIANT, "Central moment of the given order.", ARG_IN(x), ARG_IN(Order)) \
    M(6, Median, VARIANT, "Median of the samples.", ARG_IN(x)) \
    M(7, Mode, VARIANT, "Mode of the samples from a histogram.", ARG_IN(x), ARG_IN(xBase), ARG_IN(xTop), ARG_IN(Intervals)) \
    M(8, Histogram, VOID, "Histogram of the samples.", ARG_IN(x), ARG_IN(xBase), ARG_IN(xTop), ARG_IN(Intervals), ARG_OUT(Hist), ARG_OUT(Axis)) \
    M(9, NDist, VARIANT, "Lower-tail probability of the standard normal distribution.", ARG_IN(x)) \
    M(10, TDist, VARIANT, "Lower-tail probability of Student's t distribution.", ARG_IN(t), ARG_IN(n)) \
    M(11, FDist, VARIANT, "Lower-tail probability of the F distribution.", ARG_IN(f), ARG_IN(n), ARG_IN(m)) \
    M(12, XXDist, VARIANT, "Lower-tail probability of the chi-square distribution.", ARG_IN(x), ARG_IN(n)) \
    M(13, InvNDist, VARIANT, "Inverse of the standard normal lower-tail probability.", ARG_IN(p)) \
    M(14, InvTDist, VARIANT, "Inverse of Student's t lower-tail probability.", ARG_IN(p), ARG_IN(n)) \
    M(15, InvFDist, VARIANT, "Inverse of the F lower-tail probability.", ARG_IN(p), ARG_IN(n), ARG_IN(m)) \
    M(16, InvXXDist, VARIANT, "Inverse of the chi-square lower-tail probability.", ARG_IN(p), ARG_IN(n)) \
    M(17, LinFit, VOID, "Straight-line least-squares fit.", ARG_IN(x), ARG_IN(y), ARG_OUT(z), ARG_OUT(Slope), ARG_OUT(Intercept), ARG_OUT(mse)) \
    M(18, ExpFit, VOID, "Exponential least-squares fit.", ARG_IN(x), ARG_IN(y), ARG_OUT(z), ARG_OUT(a), ARG_OUT(b), ARG_OUT(mse)) \
    M(19, PolyFit, VOID, "Polynomial least-squares fit.", ARG_IN(x), ARG_IN(y), ARG_IN(Order), ARG_OUT(z), ARG_OUT(Coef), ARG_OUT(mse)) \
    M(20, GenLSFit, VOID, "General linear least-squares fit.", ARG_IN(H), ARG_IN(y), ARG_IN(StdDev), ARG_IN(Algorithm), ARG_OUT(z), ARG_OUT(b), ARG_OUT(covar), ARG_OUT(mse)) \
    M(21, PolyInterp, VOID, "Polynomial interpolation with an error estimate.", ARG_IN(x), ARG_IN(y), ARG_IN(xVal), ARG_OUT(InterpVal), ARG_OUT(Error)) \
    M(22, SpInterp, VOID, "Cubic spline interpolation.", ARG_IN(x), ARG_IN(y), ARG_IN(y2), ARG_IN(xVal), ARG_OUT(InterpVal)) \
    M(23, RatInterp, VOID, "Rational interpolation with an error estimate.", ARG_IN(x), ARG_IN(y), ARG_IN(xVal), ARG_OUT(InterpVal), ARG_OUT(dError)) \
    M(24, Spline, VARIANT, "Second derivatives of the cubic spline through the points.", ARG_IN(x), ARG_IN(y), ARG_IN(b1), ARG_IN(b2)) \
    M(25, ContingencyTable, VOID, "Chi-square test of independence of a contingency table.", ARG_IN(y), ARG_OUT(TestStat), ARG_OUT(Sig)) \
    M(26, ANOVA1Way, VOID, "One-way analysis of variance.", ARG_IN(y), ARG_IN(Level), ARG_IN(k), ARG_OUT(ssa), ARG_OUT(msa), ARG_OUT(f), ARG_OUT(Sig), ARG_OUT(sse), ARG_OUT(mse), ARG_OUT(tss)) \
    M(27, ANOVA2Way, VOID, "Two-way analysis of variance.", ARG_IN(y), ARG_IN(LevelA), ARG_IN(LevelB), ARG_IN(a), ARG_IN(b), ARG_IN(Random), ARG_OUT(ss), ARG_OUT(ms), ARG_OUT(f), ARG_OUT(Sig), ARG_OUT(sse), ARG_OUT(mse), ARG_OUT(tss)) \
    M(28, ANOVA3Way, VOID, "Three-way analysis of variance.", ARG_IN(y), ARG_IN(LevelA), ARG_IN(LevelB), ARG_IN(LevelC), ARG_IN(a), ARG_IN(b), ARG_IN(c), ARG_IN(Random), ARG_OUT(ss), ARG_OUT(ms), ARG_OUT(f), ARG_OUT(Sig), ARG_OUT(sse), ARG_OUT(mse), ARG_OUT(tss)) \
    M(29, MeanSquaredError, VARIANT, "Mean squared difference of two arrays.", ARG_IN(x), ARG_IN(y)) \
    M(-552, AboutBox, VOID, "Shows the about box.")

#define VN_DSP_METHODS(M) \
    M(1, Impulse, VARIANT, "Impulse pattern.", ARG_IN(n), ARG_IN(Amp), ARG_IN(Index)) \
    M(2, Pulse, VARIANT, "Rectangular pulse pattern.", ARG_IN(n), ARG_IN(Amp), ARG_IN(Delay), ARG_IN(Width)) \
    M(3, Ramp, VARIANT, "Ramp from first to last.", ARG_IN(n), ARG_IN(first), ARG_IN(last)) \
    M(4, Triangle, VARIANT, "Triangle pattern.", ARG_IN(n), ARG_IN(Amp)) \
    M(5, SinePattern, VARIANT, "Sine pattern of the given number of cycles.", ARG_IN(n), ARG_IN(Amp), ARG_IN(Phase), ARG_IN(Cycles)) \
    M(6, Uniform, VARIANT, "Uniform noise in [0, 1).", ARG_IN(n), ARG_IN(Seed)) \
    M(7, WhiteNoise, VARIANT, "Uniform white noise in [-Amp, Amp).", ARG_IN(n), ARG_IN(Amp), ARG_IN(Seed)) \
    M(8, GaussNoise, VARIANT, "Gaussian white noise.", ARG_IN(n), ARG_IN(sDev), ARG_IN(Seed)) \
    M(9, Chirp, VARIANT, "Chirp pattern from f1 to f2.", ARG_IN(n), ARG_IN(Amp), ARG_IN(f1), ARG_IN(f2)) \
    M(10, ArbitraryWave, VARIANT, "Periodic wave from a table; Phase is carried across calls.", ARG_IN(n), ARG_IN(Amp), ARG_IN(f), ARG_IN(WaveTable), ARG_IN(Interp), ARG_OUT(Phase)) \
    M(11, SawtoothWave, VARIANT, "Sawtooth wave; Phase is carried across calls.", ARG_IN(n), ARG_IN(Amp), ARG_IN(f), ARG_OUT(Phase)) \
    M(12, Sinc, VARIANT, "Sinc pattern.", ARG_IN(n), ARG_IN(Amp), ARG_IN(Delay), ARG_IN(dt)) \
    M(13, SineWave, VARIANT, "Sine wave; Phase is carried across calls.", ARG_IN(n), ARG_IN(Amp), ARG_IN(f), ARG_OUT(Phase)) \
    M(14, SquareWave, VARIANT, "Square wave; Phase is carried across calls.", ARG_IN(n), ARG_IN(Amp), ARG_IN(f), ARG_IN(DutyCycle), ARG_OUT(Phase)) \
    M(15, TriangleWave, VARIANT, "Triangle wave; Phase is carried across calls.", ARG_IN(n), ARG_IN(Amp), ARG_IN(f), ARG_OUT(Phase)) \
    M(16, FFT, VOID, "Complex fast Fourier transform.", ARG_IN(xr), ARG_IN(xi), ARG_OUT(yr), ARG_OUT(yi)) \
    M(17, InvFFT, VOID, "Inverse complex fast Fourier transform.", ARG_IN(xr), ARG_IN(xi), ARG_OUT(yr), ARG_OUT(yi)) \
    M(18, ReFFT, VOID, "Fast Fourier transform of a real sequence.", ARG_IN(x), ARG_OUT(y), ARG_OUT(z)) \
    M(19, ReInvFFT, VOID, "Inverse Fourier transform to a real sequence.", ARG_IN(xr), ARG_IN(xi), ARG_OUT(yr)) \
    M(20, Spectrum, VARIANT, "Two-sided power spectrum.", ARG_IN(x)) \
    M(21, FHT, VARIANT, "Fast Hartley transform.", ARG_IN(x)) \
    M(22, InvFHT, VARIANT, "Inverse fast Hartley transform.", ARG_IN(x)) \
    M(23, Convolve, VARIANT, "Linear convolution of two sequences.", ARG_IN(x), ARG_IN(y)) \
    M(24, Correlate, VARIANT, "Cross-correlation of two sequences.", ARG_IN(x), ARG_IN(y)) \
    M(25, Integrate, VARIANT, "Running integral of a sampled signal.", ARG_IN(x), ARG_IN(dt), ARG_IN(xInit), ARG_IN(xFinal)) \
    M(26, Difference, VARIANT, "Derivative of a sampled signal by central differences.", ARG_IN(x), ARG_IN(dt), ARG_IN(xInit), ARG_IN(xFinal)) \
    M(27, PulseParam, VOID, "Measures the parameters of a pulse.", ARG_IN(pulsePattern), ARG_OUT(Amp), ARG_OUT(Amp90), ARG_OUT(Amp50), ARG_OUT(Amp10), ARG_OUT(Top), ARG_OUT(Base), ARG_OUT(TopOvershoot), ARG_OUT(BaseOvershoot), ARG_OUT(Delay), ARG_OUT(Width), ARG_OUT(RiseTime), ARG_OUT(FallTime), ARG_OUT(SlewRate)) \
    M(28, Decimate, VARIANT, "Decimates a sequence, with optional block averaging.", ARG_IN(x), ARG_IN(dFact), ARG_IN(y)) \
    M(29, Deconvolve, VARIANT, "Deconvolution of y by x.", ARG_IN(y), ARG_IN(x)) \
    M(30, UnWrap1D, VARIANT, "Unwraps a phase sequence.", ARG_IN(Phase)) \
    M(31, BwLPF, VARIANT, "Butterworth lowpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fc), ARG_IN(Order)) \
    M(32, BwHPF, VARIANT, "Butterworth highpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fc), ARG_IN(Order)) \
    M(33, BwBPF, VARIANT, "Butterworth bandpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(Order)) \
    M(34, BwBSF, VARIANT, "Butterworth bandstop filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(Order)) \
    M(35, ChLPF, VARIANT, "Chebyshev lowpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fc), ARG_IN(Ripple), ARG_IN(Order)) \
    M(36, ChHPF, VARIANT, "Chebyshev highpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fc), ARG_IN(Ripple), ARG_IN(Order)) \
    M(37, ChBSF, VARIANT, "Chebyshev bandstop filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(Ripple), ARG_IN(Order)) \
    M(38, ChBPF, VARIANT, "Chebyshev bandpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(Ripple), ARG_IN(Order)) \
    M(39, InvChLPF, VARIANT, "Inverse Chebyshev lowpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fc), ARG_IN(Atten), ARG_IN(Order)) \
    M(40, InvChHPF, VARIANT, "Inverse Chebyshev highpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fc), ARG_IN(Atten), ARG_IN(Order)) \
    M(41, InvChBPF, VARIANT, "Inverse Chebyshev bandpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(Atten), ARG_IN(Order)) \
    M(42, InvChBSF, VARIANT, "Inverse Chebyshev bandstop filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(Atten), ARG_IN(Order)) \
    M(43, ElpLPF, VARIANT, "Elliptic lowpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fc), ARG_IN(Ripple), ARG_IN(Atten), ARG_IN(Order)) \
    M(44, ElpHPF, VARIANT, "Elliptic highpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fc), ARG_IN(Ripple), ARG_IN(Atten), ARG_IN(Order)) \
    M(45, ElpBPF, VARIANT, "Elliptic bandpass filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(Ripple), ARG_IN(Atten), ARG_IN(Order)) \
    M(46, ElpBSF, VARIANT, "Elliptic bandstop filtering.", ARG_IN(x), ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(Ripple), ARG_IN(Atten), ARG_IN(Order)) \
    M(47, WindLPCoef, VARIANT, "Windowed lowpass FIR coefficients.", ARG_IN(fs), ARG_IN(fc), ARG_IN(n), ARG_IN(WindType)) \
    M(48, WindHPCoef, VARIANT, "Windowed highpass FIR coefficients.", ARG_IN(fs), ARG_IN(fc), ARG_IN(n), ARG_IN(WindType)) \
    M(49, WindBPCoef, VARIANT, "Windowed bandpass FIR coefficients.", ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(n), ARG_IN(WindType)) \
    M(50, WindBSCoef, VARIANT, "Windowed bandstop FIR coefficients.", ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(n), ARG_IN(WindType)) \
    M(51, KsrLPCoef, VARIANT, "Kaiser-window lowpass FIR coefficients.", ARG_IN(fs), ARG_IN(fc), ARG_IN(n), ARG_IN(beta)) \
    M(52, KsrHPCoef, VARIANT, "Kaiser-window highpass FIR coefficients.", ARG_IN(fs), ARG_IN(fc), ARG_IN(n), ARG_IN(beta)) \
    M(53, KsrBPCoef, VARIANT, "Kaiser-window bandpass FIR coefficients.", ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(n), ARG_IN(beta)) \
    M(54, KsrBSCoef, VARIANT, "Kaiser-window bandstop FIR coefficients.", ARG_IN(fs), ARG_IN(fl), ARG_IN(fh), ARG_IN(n), ARG_IN(beta)) \
    M(55, EquiRipple, VARIANT, "Equiripple multiband FIR design.", ARG_IN(Bands), ARG_IN(a), ARG_IN(wts), ARG_IN(fs), ARG_IN(Cutoffs), ARG_IN(ftype), ARG_IN(n), ARG_OUT(delta)) \
    M(56, EquiRplLPCoef, VARIANT, "Equiripple lowpass FIR coefficients.", ARG_IN(fs), ARG_IN(f1), ARG_IN(f2), ARG_IN(n), ARG_OUT(delta)) \
    M(57, EquiRplHPCoef, VARIANT, "Equiripple highpass FIR coefficients.", ARG_IN(fs), ARG_IN(f1), ARG_IN(f2), ARG_IN(n), ARG_OUT(delta)) \
    M(58, EquiRplBPCoef, VARIANT, "Equiripple bandpass FIR coefficients.", ARG_IN(fs), ARG_IN(f1), ARG_IN(f2), ARG_IN(f3), ARG_IN(f4), ARG_IN(n), ARG_OUT(delta)) \
    M(59, EquiRplBSCoef, VARIANT, "Equiripple bandstop FIR coefficients.", ARG_IN(fs), ARG_IN(f1), ARG_IN(f2), ARG_IN(f3), ARG_IN(f4), ARG_IN(n), ARG_OUT(delta)) \
    M(60, TriWin, VARIANT, "Applies a triangle window.", ARG_IN(x)) \
    M(61, HanWin, VARIANT, "Applies a Hanning window.", ARG_IN(x)) \
    M(62, HamWin, VARIANT, "Applies a Hamming window.", ARG_IN(x)) \
    M(63, BkmanWin, VARIANT, "Applies a Blackman window.", ARG_IN(x)) \
    M(64, KsrWin, VARIANT, "Applies a Kaiser window.", ARG_IN(x), ARG_IN(beta)) \
    M(65, BlkHarrisWin, VARIANT, "Applies a Blackman-Harris window.", ARG_IN(x)) \
    M(66, CosTaperedWin, VARIANT, "Applies a cosine-tapered window.", ARG_IN(x)) \
    M(67, ExBkmanWin, VARIANT, "Applies an exact Blackman window.", ARG_IN(x)) \
    M(68, ExpWin, VARIANT, "Applies an exponential window.", ARG_IN(x), ARG_IN(Final)) \
    M(69, FlatTopWin, VARIANT, "Applies a flat top window.", ARG_IN(x)) \
    M(70, ForceWin, VARIANT, "Applies a force window.", ARG_IN(x), ARG_IN(Duty)) \
    M(71, GenCosWin, VARIANT, "Applies a general cosine window.", ARG_IN(x), ARG_IN(a)) \
    M(72, ACDCEstimator, VOID, "Estimates the AC and DC content of a signal.", ARG_IN(x), ARG_OUT(ACEstimate), ARG_OUT(DCEstimate)) \
    M(73, AmpPhaseSpectrum, VOID, "Single-sided amplitude and phase spectrum.", ARG_IN(x), ARG_IN(Unwrap), ARG_IN(dt), ARG_OUT(AmpSpectrum), ARG_OUT(PhaseSpectrum), ARG_OUT(df)) \
    M(74, AutoPowerSpectrum, VOID, "Single-sided auto power spectrum.", ARG_IN(x), ARG_IN(dt), ARG_OUT(AutoSpectrum), ARG_OUT(df)) \
    M(75, ImpulseResponse, VARIANT, "Impulse response from stimulus and response.", ARG_IN(Stimulus), ARG_IN(Response)) \
    M(76, NetworkFunctions, VOID, "Averaged cross spectrum, transfer function, coherence and impulse response.", ARG_IN(Stimulus), ARG_IN(Response), ARG_IN(dt), ARG_OUT(magSxy), ARG_OUT(phaseSxy), ARG_OUT(magHf), ARG_OUT(phaseHf), ARG_OUT(Coherence), ARG_OUT(Impulse), ARG_OUT(df)) \
    M(77, ScaledWindow, VOID, "Applies a window scaled by its coherent gain.", ARG_IN(x), ARG_IN(WindowType), ARG_OUT(y), ARG_OUT(ENBW), ARG_OUT(CoherentGain)) \
    M(78, TransferFunction, VOID, "Transfer function from stimulus and response.", ARG_IN(Stimulus), ARG_IN(Response), ARG_IN(dt), ARG_OUT(magHf), ARG_OUT(phaseHf), ARG_OUT(df)) \
    M(79, CrossSpectrum, VOID, "Two-sided cross spectrum.", ARG_IN(x), ARG_IN(y), ARG_OUT(reslSxy), ARG_OUT(imagSxy)) \
    M(80, CrossPowerSpectrum, VOID, "Single-sided cross power spectrum.", ARG_IN(x), ARG_IN(y), ARG_IN(dt), ARG_OUT(magSxy), ARG_OUT(phaseSxy), ARG_OUT(df)) \
    M(81, PowerFrequencyEstimate, VOID, "Frequency and power of a spectral peak.", ARG_IN(AutoSpectrum), ARG_IN(SearchFreq), ARG_IN(ENBW), ARG_IN(CoherentGain), ARG_IN(df), ARG_IN(Span), ARG_OUT(FreqPeak), ARG_OUT(PowerPeak)) \
    M(82, IIRFiltering, VOID, "Runs samples through an IIR filter, carrying its state.", ARG_IN(x), ARG_IN(a), ARG_IN(b), ARG_OUT(y1), ARG_OUT(x1), ARG_OUT(y)) \
    M(83, SpectrumUnitConversion, VARIANT, "Converts a spectrum between spectrum types, scaling modes and display units.", ARG_IN(Spectrum), ARG_IN(SpectrumType), ARG_IN(ScalingMode), ARG_IN(DisplayUnit), ARG_IN(df), ARG_IN(ENBW), ARG_IN(CoherentGain), ARG_OUT(ConvertedSpectrum)) \
    M(84, ElpCoef, VOID, "Elliptic IIR filter coefficients.", ARG_IN(Type), ARG_IN(Order), ARG_IN(SampleFreq), ARG_IN(CutoffFreqLow), ARG_IN(CutoffFreqHigh), ARG_IN(Ripple), ARG_IN(Attenuation), ARG_IN(na), ARG_IN(nb), ARG_OUT(a), ARG_OUT(b)) \
    M(85, BwCoef, VOID, "Butterworth IIR filter coefficients.", ARG_IN(Type), ARG_IN(Order), ARG_IN(SampleFreq), ARG_IN(CutoffFreqLow), ARG_IN(CutoffFreqHigh), ARG_IN(na), ARG_IN(nb), ARG_OUT(a), ARG_OUT(b)) \
    M(86, ChCoef, VOID, "Chebyshev IIR filter coefficients.", ARG_IN(Type), ARG_IN(Order), ARG_IN(SampleFreq), ARG_IN(CutoffFreqLow), ARG_IN(CutoffFreqHigh), ARG_IN(Ripple), ARG_IN(na), ARG_IN(nb), ARG_OUT(a), ARG_OUT(b)) \
    M(87, InvChCoef, VOID, "Inverse Chebyshev IIR filter coefficients.", ARG_IN(Type), ARG_IN(Order), ARG_IN(SampleFreq), ARG_IN(CutoffFreqLow), ARG_IN(CutoffFreqHigh), ARG_IN(Attenuation), ARG_IN(na), ARG_IN(nb), ARG_OUT(a), ARG_OUT(b)) \
    M(-552, AboutBox, VOID, "Shows the about box.")
