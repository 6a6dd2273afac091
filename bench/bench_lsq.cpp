// Accuracy of the least-squares kernels on the NIST StRD linear problems,
// side by side with numpy (numpy.polyfit and numpy.linalg.lstsq, run by
// bench/strd_numpy.py on the same data in the same run), then the time of one
// polynomial fit and one general fit against numpy's.
//
// Digits are the log relative error of the worst parameter against the
// certified value, capped at 15 (the certified values carry 15 digits).
#include "analysis/stat/fit.h"
#include "../tests/analysis/stat/strd_linear_data.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <unistd.h>

using namespace vn;
using strd::LinearSet;
using strd::Model;

namespace {

std::string ScriptPath() {
    std::string here = __FILE__;
    return here.substr(0, here.find_last_of('/')) + "/strd_numpy.py";
}

// Debian's python3 with numpy; VN_PYTHON overrides.
std::string Python() {
    if (const char* p = std::getenv("VN_PYTHON")) return p;
    return "/usr/bin/python3";
}

std::vector<double> Design(const LinearSet& s, int& k) {
    const int n = static_cast<int>(s.y.size());
    k = s.model == Model::Polynomial ? s.degree + 1 : s.model == Model::NoIntercept ? 1 : 7;
    std::vector<double> h(std::size_t(n) * k);
    // Powers by repeated products, x^j = x^(j-1) * x, the way a Vandermonde
    // matrix is usually built (numpy.vander does the same).
    for (int i = 0; i < n; ++i) {
        double power = 1;
        for (int j = 0; j < k; ++j) {
            double v = 1;
            if (s.model == Model::Polynomial) v = power;
            if (s.model == Model::NoIntercept) v = s.x[i];
            if (s.model == Model::Longley && j > 0) v = s.x[i * 6 + j - 1];
            h[std::size_t(i) * k + j] = v;
            power *= s.x[i];
        }
    }
    return h;
}

double Digits(const std::vector<double>& est, const std::vector<double>& cert) {
    double worst = 15;
    for (std::size_t j = 0; j < cert.size(); ++j) {
        const double err = cert[j] != 0 ? std::fabs(est[j] - cert[j]) / std::fabs(cert[j]) : std::fabs(est[j]);
        double d = err == 0 ? 15 : std::min(15.0, -std::log10(err));
        if (!std::isfinite(d) || d < 0) d = 0;
        worst = std::min(worst, d);
    }
    return worst;
}

std::string WriteSets() {
    std::string path = "/tmp/vn_strd_" + std::to_string(getpid()) + ".txt";
    FILE* f = std::fopen(path.c_str(), "w");
    for (const auto& s : strd::LinearSets()) {
        const char* model = s.model == Model::Polynomial ? "poly" : s.model == Model::NoIntercept ? "noint" : "longley";
        std::fprintf(f, "set %s %s %d %zu %zu\n", s.name, model, s.degree, s.y.size(), s.b.size());
        const std::vector<double>* rows[] = {&s.x, &s.y, &s.b};
        const char* tags[] = {"x", "y", "b"};
        for (int r = 0; r < 3; ++r) {
            std::fprintf(f, "%s", tags[r]);
            for (double v : *rows[r]) std::fprintf(f, " %.17g", v);
            std::fprintf(f, "\n");
        }
    }
    std::fclose(f);
    return path;
}

std::vector<std::string> RunPython(const std::string& args) {
    std::vector<std::string> lines;
    FILE* p = popen((Python() + " " + ScriptPath() + " " + args).c_str(), "r");
    if (!p) return lines;
    char buf[512];
    while (std::fgets(buf, sizeof buf, p)) lines.emplace_back(buf);
    pclose(p);
    return lines;
}

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    const std::string data = WriteSets();
    if (argc > 1 && std::string(argv[1]) == "--dump") {
        std::printf("%s\n", data.c_str());
        return 0;
    }
    if (argc > 1 && std::string(argv[1]) == "--exact") {
        for (const auto& l : RunPython("--exact " + data)) std::printf("%s", l.c_str());
        std::remove(data.c_str());
        return 0;
    }
    std::map<std::string, std::string> numpy;
    for (const auto& l : RunPython(data)) {
        char name[64];
        if (std::sscanf(l.c_str(), "numpy %63s", name) == 1) numpy[name] = l.substr(l.find(' ', 6) + 1);
    }
    std::printf("%-9s %7s %7s %7s %7s %7s %7s %7s   numpy\n", "set", "PolyFit", "code0", "code1", "code2",
                "code3", "code4", "code5");
    for (const auto& s : strd::LinearSets()) {
        int k = 0;
        const std::vector<double> h = Design(s, k);
        const int n = static_cast<int>(s.y.size());
        std::vector<double> z(n), b(k), cov(std::size_t(k) * k);
        double mse = 0;
        std::printf("%-9s", s.name);
        if (s.model == Model::Polynomial) {
            const AnalysisStatus st = PolynomialFit(s.x.data(), s.y.data(), n, s.degree, z.data(), b.data(), &mse);
            if (st < 0)
                std::printf(" %7s", "fail");
            else
                std::printf(" %7.1f", Digits(b, s.b));
        } else {
            std::printf(" %7s", "-");
        }
        for (int code = 0; code <= 5; ++code) {
            std::fill(b.begin(), b.end(), 0.0);
            const AnalysisStatus st =
                GeneralLeastSquares(h.data(), n, k, s.y.data(), nullptr, code, z.data(), b.data(), cov.data(), &mse);
            if (st < 0)
                std::printf(" %7s", "fail");
            else
                std::printf(" %7.1f", Digits(b, s.b));
        }
        std::printf("   %s", numpy[s.name].c_str());
        if (numpy[s.name].empty()) std::printf("\n");
    }

    // Time: PolyFit on Filip and GenLSFit code 1 on Longley against numpy,
    // rounds interleaved so that both see the same machine load.
    struct Case {
        const char* name;
        const char* set;
        int reps;
    };
    const Case cases[] = {{"polyfit_filip", "Filip", 2000}, {"lstsq_longley", "Longley", 5000}};
    for (const Case& c : cases) {
        const LinearSet* s = nullptr;
        for (const auto& t : strd::LinearSets())
            if (std::string(t.name) == c.set) s = &t;
        int k = 0;
        const std::vector<double> h = Design(*s, k);
        const int n = static_cast<int>(s->y.size());
        std::vector<double> z(n), b(k);
        double mse = 0;
        std::vector<double> ours, ref;
        for (int round = 0; round < 5; ++round) {
            const auto t0 = std::chrono::steady_clock::now();
            for (int r = 0; r < c.reps; ++r) {
                if (s->model == Model::Polynomial)
                    PolynomialFit(s->x.data(), s->y.data(), n, s->degree, z.data(), b.data(), &mse);
                else
                    GeneralLeastSquares(h.data(), n, k, s->y.data(), nullptr, kFitHouseholder, z.data(), b.data(),
                                        nullptr, &mse);
            }
            const auto t1 = std::chrono::steady_clock::now();
            ours.push_back(std::chrono::duration<double, std::micro>(t1 - t0).count() / c.reps);
            for (const auto& l : RunPython("--time " + std::string(c.name) + " " + std::to_string(c.reps) + " " + data)) {
                double us = 0;
                if (std::sscanf(l.c_str(), "time %*s %lf", &us) == 1) ref.push_back(us);
            }
        }
        if (ref.empty()) continue;
        const double o = Median(ours), r = Median(ref);
        std::vector<double> ratios;
        for (std::size_t i = 0; i < std::min(ours.size(), ref.size()); ++i) ratios.push_back(ours[i] / ref[i]);
        std::sort(ratios.begin(), ratios.end());
        const double spread = 100 * (ratios.back() - ratios.front()) / Median(ratios);
        std::printf("ratio bench_lsq %s ours_us=%.2f ref=numpy ref_us=%.2f ratio=%.3f spread=%.0f\n", c.name, o, r,
                    o / r, spread);
    }
    std::remove(data.c_str());
    return 0;
}
