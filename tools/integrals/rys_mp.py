"""High-precision Rys roots and weights (mpmath).

The Rys quadrature of order n for the argument X is the Gauss rule for the
weight exp(-X t^2) on t in [0, 1], written in the variable u = t^2:

    integral_0^1 f(t^2) exp(-X t^2) dt = sum_i w_i f(u_i).

Its moments are the Boys functions F_k(X), k = 0 ... 2n-1.  The recurrence
coefficients of the monic orthogonal polynomials come from the moments by
Gautschi's modified Chebyshev algorithm (ordinary moments); the nodes are
refined by Newton's method on the three-term recurrence from double-precision
eigenvalues of the Jacobi matrix, and the weights are the Christoffel numbers.
The moment problem loses roughly 1.5 digits per order, so the working
precision is set well above the 17 digits finally kept.
"""

import mpmath
import numpy

mp = mpmath.mp

# Working precision of every high-precision evaluation (decimal digits).  The
# moment problem of order 13 loses about 15 digits; 50 leaves a margin of
# more than 15 digits over double precision (checked against 100 digits).
WORKING_DPS = 50


def boys(mmax, x):
    """F_0 ... F_mmax at x (mpf), by the positive series for F_mmax and the
    stable downward recursion."""
    x = mp.mpf(x)
    eps = mp.mpf(2) ** (-mp.prec - 10)
    # F_m(x) = exp(-x) * sum_i (2x)^i / ((2m+1)(2m+3)...(2m+2i+1))
    term = 1 / mp.mpf(2 * mmax + 1)
    total = term
    i = 0
    while True:
        i += 1
        term = term * 2 * x / (2 * mmax + 2 * i + 1)
        total += term
        if abs(term) < eps * abs(total) and i > abs(x):
            break
    ex = mp.exp(-x)
    f = [mp.mpf(0)] * (mmax + 1)
    f[mmax] = ex * total
    for m in range(mmax - 1, -1, -1):
        f[m] = (2 * x * f[m + 1] + ex) / (2 * m + 1)
    return f


def recurrence(n, x):
    """alpha_0..alpha_{n-1}, beta_0..beta_{n-1} of the monic polynomials
    orthogonal for exp(-x u) u^{-1/2}/2 du on [0, 1] (the Rys weight in u)."""
    mu = boys(2 * n - 1, x)
    alpha = [mp.mpf(0)] * n
    beta = [mp.mpf(0)] * n
    sig_prev = [mp.mpf(0)] * (2 * n)
    sig = list(mu)
    alpha[0] = mu[1] / mu[0]
    beta[0] = mu[0]
    for k in range(1, n):
        new = [mp.mpf(0)] * (2 * n)
        for l in range(k, 2 * n - k):
            new[l] = sig[l + 1] - alpha[k - 1] * sig[l] - beta[k - 1] * sig_prev[l]
        alpha[k] = new[k + 1] / new[k] - sig[k] / sig[k - 1]
        beta[k] = new[k] / sig[k - 1]
        sig_prev, sig = sig, new
    return alpha, beta


def _poly_and_derivative(n, u, alpha, beta):
    p_prev, p = mp.mpf(0), mp.mpf(1)
    d_prev, d = mp.mpf(0), mp.mpf(0)
    for k in range(n):
        p_next = (u - alpha[k]) * p - beta[k] * p_prev
        d_next = p + (u - alpha[k]) * d - beta[k] * d_prev
        p_prev, p = p, p_next
        d_prev, d = d, d_next
    return p, d


def roots_weights(n, x):
    """Rys roots u_i = t_i^2 (ascending) and weights w_i for order n at x, as
    mpf lists, computed at the current mpmath precision."""
    alpha, beta = recurrence(n, x)
    jac = numpy.zeros((n, n))
    for k in range(n):
        jac[k, k] = float(alpha[k])
        if k + 1 < n:
            jac[k, k + 1] = jac[k + 1, k] = float(mp.sqrt(beta[k + 1]))
    guesses = sorted(numpy.linalg.eigvalsh(jac))
    tol = mp.mpf(2) ** (-mp.prec + 8)
    roots = []
    for g in guesses:
        u = mp.mpf(float(g))
        for _ in range(60):
            p, d = _poly_and_derivative(n, u, alpha, beta)
            step = p / d
            u -= step
            if abs(step) <= tol * abs(u):
                break
        else:
            raise RuntimeError("Newton did not converge for n=%d x=%s" % (n, x))
        roots.append(u)
    for a, b in zip(roots, roots[1:]):
        if not a < b:
            raise RuntimeError("roots not separated for n=%d x=%s" % (n, x))
    weights = []
    for u in roots:
        # Christoffel number: 1 / sum_k pi_k(u)^2 / ||pi_k||^2, ||pi_k||^2 = beta_0...beta_k
        p_prev, p = mp.mpf(0), mp.mpf(1)
        norm = beta[0]
        s = p * p / norm
        for k in range(n - 1):
            p_prev, p = p, (u - alpha[k]) * p - beta[k] * p_prev
            norm *= beta[k + 1]
            s += p * p / norm
        weights.append(1 / s)
    return roots, weights


def hermite(n):
    """Squared positive roots h_i and weights g_i (ascending in h) of the
    Gauss-Hermite rule of 2n points, the large-X limit t_i^2 = h_i/X,
    w_i = g_i/sqrt(X) of the Rys rule of order n."""
    # The even Hermite rule of 2n points is the Gauss rule for exp(-v) v^{-1/2} dv
    # on [0, inf) in v = s^2 (generalised Laguerre, a = -1/2), with half the weight
    # of each symmetric pair: moments Gamma(k + 1/2) / 2.
    mu = [mp.gamma(k + mp.mpf(1) / 2) / 2 for k in range(2 * n)]
    alpha = [mp.mpf(0)] * n
    beta = [mp.mpf(0)] * n
    for k in range(n):  # Laguerre recurrence with a = -1/2
        alpha[k] = 2 * k + mp.mpf(1) / 2
        beta[k] = k * (k - mp.mpf(1) / 2) if k > 0 else mu[0]
    jac = numpy.zeros((n, n))
    for k in range(n):
        jac[k, k] = float(alpha[k])
        if k + 1 < n:
            jac[k, k + 1] = jac[k + 1, k] = float(mp.sqrt(beta[k + 1]))
    tol = mp.mpf(2) ** (-mp.prec + 8)
    hs, gs = [], []
    for g in sorted(numpy.linalg.eigvalsh(jac)):
        v = mp.mpf(float(g))
        for _ in range(60):
            p, d = _poly_and_derivative(n, v, alpha, beta)
            step = p / d
            v -= step
            if abs(step) <= tol * abs(v):
                break
        p_prev, p = mp.mpf(0), mp.mpf(1)
        norm = beta[0]
        s = p * p / norm
        for k in range(n - 1):
            p_prev, p = p, (v - alpha[k]) * p - beta[k] * p_prev
            norm *= beta[k + 1]
            s += p * p / norm
        hs.append(v)
        gs.append(1 / s)
    return hs, gs
