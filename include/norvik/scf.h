/* norvik: exported routines of the Hartree–Fock SCF (see norvik.h for the
 * convention; docs/scf.md settles every argument list and shows the calling
 * sequence of a single point).
 *
 * Shared layouts (n = nbasis, column-major, energies and Fock matrices in eV,
 * positions in ångström, dipoles in e·Å):
 *   S, T, V    (n, n)        overlap, kinetic energy, nuclear attraction (CALCMTRX)
 *   X          (n, n)        orthogonalising matrix (ORTHOG_BASIS); its first
 *                            northo columns are used
 *   dipints    (n, n, 3)     position integrals <a|x|b>, <a|y|b>, <a|z|b> [Å]
 *   G          (n, n, 2)     two-electron part of the Fock matrices, alpha then
 *                            beta: J[Pα+Pβ] − K[Pσ] [eV]; the Fock matrix of spin
 *                            σ is T + V + Gσ
 *   rho        (n, n, 2)     density matrices, alpha then beta
 *   orbitals   (n, n+1, 2)   per spin: orbital coefficients in columns 1 … n in
 *                            ascending order of level, the levels [eV] in column
 *                            n+1; with northo < n only northo orbitals exist
 *                            (the other columns and levels are zero)
 *   fockhist,  (n, n, 6, 2)  damping/DIIS histories of Fock and error matrices:
 *   errhist                  six slots per spin, slot 1 the newest, alpha first;
 *                            zero-filled by the caller before the first step
 *   scratch    (n, n, 2)     receives the Fock matrices T + V + Gσ of the step
 * The two-electron context (10 arguments, NORVIK_CONTEXT_ARGS of
 * norvik/integrals_two.h) is passed through unchanged to the Fock build. */
#ifndef NORVIK_SCF_H
#define NORVIK_SCF_H

#include "norvik/export.h"
#include "norvik/integrals_two.h"

NORVIK_EXTERN_C_BEGIN

/* ---- density update (one SCF step for both spins) ----------------------------
 * All take 15 arguments:
 *   nbasis (in); S, T, V, G (in); northo (in); X (in);
 *   control (in): the damping factor d of the _DAMP members (ρ ← (1−d)ρ + d ρ_new),
 *     the DIIS subspace (32-bit integer, 1 … 6 newest slots; the SCF drivers pass 6)
 *     of the _DIIS members;
 *   fockhist, errhist (in-out); scratch (out); rho (in-out); orbitals (out);
 *   rmsd (out): √(Σ (ρ_new − ρ_old)² / (2n²)) over both spins;
 *   comm2 (out): ‖FαPαS − SPαFα‖² + ‖FβPβS − SPβFβ‖² [eV²].
 * The electron count of each spin is the nearest integer of Tr(ρσ S) of the
 * incoming density.  UPDATERHO_ occupy the lowest orbitals; UPDATERHOA_ (free
 * atoms) fill whole degenerate shells and share the electrons of the open shell
 * evenly over it.  The plain members choose _GHQR (northo = n) or _ORTH
 * (northo < n); _GHQR always solves in the full basis, _ORTH always in the
 * orthogonalised one.  The DIIS step takes the extrapolated density whole. */
#define NORVIK_UPDATE_ARGS(CONTROL)                                                             \
  const norvik_int *nbasis, const double *S, const double *T, const double *V, const double *G, \
      const norvik_int *northo, const double *X, CONTROL, double *fockhist, double *errhist,    \
      double *scratch, double *rho, double *orbitals, double *rmsd, double *comm2
NORVIK_API void UPDATERHO_DAMP(NORVIK_UPDATE_ARGS(const double* damp));
NORVIK_API void UPDATERHO_DAMP_GHQR(NORVIK_UPDATE_ARGS(const double* damp));
NORVIK_API void UPDATERHO_DAMP_ORTH(NORVIK_UPDATE_ARGS(const double* damp));
NORVIK_API void UPDATERHO_DIIS(NORVIK_UPDATE_ARGS(const norvik_int* nsub));
NORVIK_API void UPDATERHO_DIIS_GHQR(NORVIK_UPDATE_ARGS(const norvik_int* nsub));
NORVIK_API void UPDATERHO_DIIS_ORTH(NORVIK_UPDATE_ARGS(const norvik_int* nsub));
NORVIK_API void UPDATERHOA_DAMP(NORVIK_UPDATE_ARGS(const double* damp));
NORVIK_API void UPDATERHOA_DAMP_GHQR(NORVIK_UPDATE_ARGS(const double* damp));
NORVIK_API void UPDATERHOA_DAMP_ORTH(NORVIK_UPDATE_ARGS(const double* damp));
NORVIK_API void UPDATERHOA_DIIS(NORVIK_UPDATE_ARGS(const norvik_int* nsub));
NORVIK_API void UPDATERHOA_DIIS_GHQR(NORVIK_UPDATE_ARGS(const norvik_int* nsub));
NORVIK_API void UPDATERHOA_DIIS_ORTH(NORVIK_UPDATE_ARGS(const norvik_int* nsub));

/* Error matrix E = F P S − S P F of one spin and its squared Frobenius norm.
 *   nbasis (in); F, P, S (in, (n, n)); E (out, (n, n)); norm2 (out). */
NORVIK_API void ERRORV(const norvik_int* nbasis, const double* F, const double* P, const double* S,
                       double* E, double* norm2);
/* Pushes M (in, (n, n)) into one spin's six-slot history hist (in-out, (n, n, 6)):
 * slots 1 … 5 move to 2 … 6, M goes to slot 1. */
NORVIK_API void HISTORY(const norvik_int* nbasis, const double* M, double* hist);
/* DIIS matrix over the newest nsub (1 … 6) slots of both spins:
 *   nbasis, nsub (in); errhist (in, (n, n, 6, 2)); B (out, (nsub, nsub)),
 *   B_ij = Σσ Σ (E_iσ ⊙ E_jσ). */
NORVIK_API void MAKEBMAT(const norvik_int* nbasis, const norvik_int* nsub, const double* errhist,
                         double* B);
/* DIIS coefficients: nsub (in, 1 … 6); B (in, (nsub, nsub)); coef (out, nsub, their
 * sum 1); ill (out): 0, or the nonzero status of the bordered solve (BUNCHD) when
 * the system is singular (coef is then zero). */
NORVIK_API void DIISSOLVE(const norvik_int* nsub, const double* B, double* coef, norvik_int* ill);
/* Reverses the order of n levels eig (in-out, n) and of the columns of vec
 * (in-out, (n, n)): descending eigen-solver output becomes ascending. */
NORVIK_API void REVERSE(const norvik_int* n, double* eig, double* vec);

/* ---- energies and moments ----------------------------------------------------- */

/* Electronic energy Σσ Tr(Pσ (T + V)) + ½ Σσ Tr(Pσ Gσ) [eV]:
 *   nbasis; T, V (in, (n, n)); G, rho (in, (n, n, 2)); energy (out). */
NORVIK_API void ENERGYEDX(const norvik_int* nbasis, const double* T, const double* V,
                          const double* G, const double* rho, double* energy);
/* Electronic dipole −Σσ Tr(Pσ D_k) [e·Å]: nbasis; dipints (in, (n, n, 3));
 * rho (in, (n, n, 2)); dipole (out, 3). */
NORVIK_API void DIPOLEMOM(const norvik_int* nbasis, const double* dipints, const double* rho,
                          double* dipole);
/* Nuclear repulsion Σ_{a<b} Za Zb / Rab [eV]: natom; zat (in, natom nuclear charges,
 * 0 for a ghost); pos (in, (3, natom) Å); energy (out).  Two charged nuclei on one
 * point stop with "Two nuclei coincide in NuclearRep." and the two atom numbers. */
NORVIK_API void NUCLEARREP(const norvik_int* natom, const norvik_int* zat, const double* pos,
                           double* energy);
/* Nuclear dipole Σa Za Ra [e·Å]: natom; zat; pos; dipole (out, 3). */
NORVIK_API void NUCLEAREDM(const norvik_int* natom, const norvik_int* zat, const double* pos,
                           double* dipole);
/* Keeps a Hartree–Fock result (for instance before a Kohn–Sham stage starts from it):
 *   nbasis; rho (in, (n, n, 2)); orbitals (in, (n, n+1, 2)); energy (in); dipole
 *   (in, 3); rhohf, orbitalshf, energyhf, dipolehf (out, the same shapes). */
NORVIK_API void STOREHF(const norvik_int* nbasis, const double* rho, const double* orbitals,
                        const double* energy, const double* dipole, double* rhohf,
                        double* orbitalshf, double* energyhf, double* dipolehf);

/* ---- start densities ----------------------------------------------------------- */

/* Rescales each spin block of rho (in-out, (n, n, 2)) so that Tr(ρσ S) = Nσ; a block
 * without electrons that must hold some takes the total density scaled.
 *   nbasis; S (in); nalpha, nbeta (in); rho (in-out). */
NORVIK_API void NORMALIZERHO(const norvik_int* nbasis, const double* S, const norvik_int* nalpha,
                             const norvik_int* nbeta, double* rho);
/* Molecular start from free-atom densities: the total of atomrho (in, (n, n, 2),
 * block-diagonal, as ATOMS returns it) shared out as ρσ = D·Nσ/Tr(D S).
 *   natom (in, ≥ 1); atomrho; nbasis; S; nalpha, nbeta; rho (out). */
NORVIK_API void PATCHRHOATOM(const norvik_int* natom, const double* atomrho,
                             const norvik_int* nbasis, const double* S, const norvik_int* nalpha,
                             const norvik_int* nbeta, double* rho);

/* ---- SCF drivers ----------------------------------------------------------------
 * HF_SCF and its members take 32 arguments:
 *   1 iopt, 2 isrc (in): the first two integers of every run-log line;
 *   3 logfile (in, 120 chars; blank: no log);  4 niter (in, 0: no cycle);
 *   5 damp (in, cycles 2 … 8);  6 thr_ene (in, eV);  7 thr_rms (in);
 *   8 e_offset (in, eV, added to the logged energy: the nuclear repulsion);
 *   9 dip_offset (in, 3, added to the logged dipole: the nuclear dipole);
 *   10 nbasis;  11 northo;  12 X;  13 S;  14 T;  15 V;  16 dipints;
 *   17–26 the two-electron context;
 *   27 G (in-out, must belong to rho on entry: the initialisers make it so);
 *   28 rho (in-out);  29 orbitals (in-out);
 *   30 energy (out, electronic, eV);  31 dipole (out, 3, electronic; zero for _PART);
 *   32 de_final (out, |E(last) − E(one before)| eV; 0 for niter 0 and 1).
 * Cycle 1 undamped, damping to cycle 8, DIIS after; converged when
 * thr_ene > |ΔE| and thr_rms > rmsd.  _MOLE as the plain one; _ATOM free-atom
 * occupation in the damping phase; _WOLOG no run log; _PART no run log and no
 * dipole; _DIRECT integral-direct incremental Fock builds. */
#define NORVIK_HF_SCF_ARGS                                                                       \
  const norvik_int *iopt, const norvik_int *isrc, const char *logfile, const norvik_int *niter,  \
      const double *damp, const double *thr_ene, const double *thr_rms, const double *e_offset,  \
      const double *dip_offset, const norvik_int *nbasis, const norvik_int *northo,              \
      const double *X, const double *S, const double *T, const double *V, const double *dipints, \
      const norvik_int *nshell, const double *shelltab, const norvik_int *nshpair,               \
      const norvik_int *shpair, const norvik_int *npair, const norvik_int *pairlist,             \
      const norvik_int *pairmap, const double *vdiag, double *vint, const double *thresh,        \
      double *G, double *rho, double *orbitals, double *energy, double *dipole, double *de_final
NORVIK_API void HF_SCF(NORVIK_HF_SCF_ARGS);
NORVIK_API void HF_SCF_MOLE(NORVIK_HF_SCF_ARGS);
NORVIK_API void HF_SCF_ATOM(NORVIK_HF_SCF_ARGS);
NORVIK_API void HF_SCF_WOLOG(NORVIK_HF_SCF_ARGS);
NORVIK_API void HF_SCF_PART(NORVIK_HF_SCF_ARGS);
NORVIK_API void HF_SCF_DIRECT(NORVIK_HF_SCF_ARGS);
NORVIK_API void HF_SCF_MOLE_DIRECT(NORVIK_HF_SCF_ARGS);
NORVIK_API void HF_SCF_ATOM_DIRECT(NORVIK_HF_SCF_ARGS);
NORVIK_API void HF_SCF_WOLOG_DIRECT(NORVIK_HF_SCF_ARGS);
NORVIK_API void HF_SCF_PART_DIRECT(NORVIK_HF_SCF_ARGS);

/* Initialisers (31 arguments): start density, start orbitals and the first G.
 * Arguments 10-29 are those of HF_SCF at the same positions, so a host passes one
 * set of arrays to both.
 *   1 istart (in): 1 a fresh start; any other value: rescale the supplied rho to
 *     its own electron counts (NORMALIZERHO), e.g. the density of the previous
 *     geometry in the new overlap;
 *   2 natom (in, a count): with istart 1 and a count above 9 the start is the
 *     free-atom densities (PATCHRHOATOM), otherwise the bare one-electron start;
 *   3 atomrho (in, (n, n, 2)): free-atom densities from ATOMS (read only in the
 *     PATCHRHOATOM branch);
 *   4 niter, 5 damp, 6 thr_ene, 7 thr_rms, 8 e_offset, 9 dip_offset (3): the SCF
 *     settings of HF_SCF's arguments 4-9; an initialiser makes no cycle and reads
 *     none of them;
 *   10 nbasis; 11 northo; 12 X; 13 S; 14 T; 15 V; 16 dipints; 17-26 the context;
 *   27 G (out); 28 rho (in-out); 29 orbitals (in-out: written by the bare start);
 *   30 energy (out, electronic energy of the start, eV); 31 dipole (out, 3).
 * The electron counts of each spin are those of the incoming rho, the nearest
 * integers of Tr(rho_s S), as every density update counts them: a host starts a
 * molecule with MAKEINIRHO(zsum, charge, multiplicity, nbasis, rho), whose density
 * carries exactly the counts.  The bare start clears G and makes one
 * UPDATERHO_DAMP with damping 1.0 from that density, i.e. from the Fock matrix
 * T + V.  HF_INI_MOLE is HF_INI; HF_INI_NOINT always makes the bare start;
 * HF_INI_ATOM the free-atom start (UPDATERHOA_DAMP); _DIRECT members build G
 * integral-direct. */
#define NORVIK_HF_INI_ARGS                                                                       \
  const norvik_int *istart, const norvik_int *natom, const double *atomrho,                      \
      const norvik_int *niter, const double *damp, const double *thr_ene, const double *thr_rms, \
      const double *e_offset, const double *dip_offset, const norvik_int *nbasis,                \
      const norvik_int *northo, const double *X, const double *S, const double *T,               \
      const double *V, const double *dipints, const norvik_int *nshell, const double *shelltab,  \
      const norvik_int *nshpair, const norvik_int *shpair, const norvik_int *npair,              \
      const norvik_int *pairlist, const norvik_int *pairmap, const double *vdiag, double *vint,  \
      const double *thresh, double *G, double *rho, double *orbitals, double *energy,            \
      double *dipole
NORVIK_API void HF_INI(NORVIK_HF_INI_ARGS);
NORVIK_API void HF_INI_MOLE(NORVIK_HF_INI_ARGS);
NORVIK_API void HF_INI_ATOM(NORVIK_HF_INI_ARGS);
NORVIK_API void HF_INI_NOINT(NORVIK_HF_INI_ARGS);
NORVIK_API void HF_INI_DIRECT(NORVIK_HF_INI_ARGS);
NORVIK_API void HF_INI_MOLE_DIRECT(NORVIK_HF_INI_ARGS);
NORVIK_API void HF_INI_ATOM_DIRECT(NORVIK_HF_INI_ARGS);
NORVIK_API void HF_INI_NOINT_DIRECT(NORVIK_HF_INI_ARGS);

/* ---- Kohn–Sham SCF drivers ---------------------------------------------------------
 * KS_SCF and its members take 42 arguments: 1–26 those of HF_SCF, then
 *   27 functional (in, 10 chars): its exact-exchange weight a is 1.0 for "OP",
 *      0.2 for "B3LYP", "B1OP", "B3LYP3", "B3LYP5" and 0.0 for any other name; a
 *      name without a functional stops with " Wrong DFname in calcvXchCorr.";
 *   28 npts (in);  29 points (in, (3, npts) Å, as GRID_MOLE gives them);
 *   30 w (in, npts weights);  31 chi (in, (4, npts, nbasis) from LIST_BASIS);
 *   32 rhogrid (out, (8, npts): the density table of the last density);
 *   33 vxc (out, (n, n, 2): the exchange–correlation matrices contained in G,
 *      eV; not read: Vxc is a function of rho, so on entry the driver makes it
 *      again and continues from G − Vxc as the J − aK part);
 *   34 nelec (out, 3: the electrons the grid sees, α, β, both);
 *   35 G, 36 rho, 37 orbitals (as HF_SCF's 27–29; G = J − aK + Vxc, on entry
 *      that of rho, as KS_INI or the previous KS_SCF call left them);
 *   38 energy (out, electronic energy without the exchange–correlation energy, eV);
 *   39 exc (out, 3: exchange–correlation energy, its exchange and correlation
 *      parts, eV);  40 etotal (out, energy + exc(1): the electronic energy, eV);
 *   41 dipole (out, 3);  42 de_final (out, eV, of etotal).
 * The cycle is HF_SCF's; the convergence test and the log's energy column
 * (WRITE_LOG_KS, the format of WRITE_LOG_HF) use etotal.  niter 0 evaluates
 * the energies and the dipole of rho only.  The members' suffixes mean what
 * they mean for HF_SCF; KS_SCF_C2/_B2 take salc and salcblock after the 42. */
#define NORVIK_KS_GRID_ARGS                                                              \
  const char *functional, const norvik_int *npts, const double *points, const double *w, \
      const double *chi, double *rhogrid, double *vxc, double *nelec
#define NORVIK_KS_SCF_ARGS                                                                       \
  const norvik_int *iopt, const norvik_int *isrc, const char *logfile, const norvik_int *niter,  \
      const double *damp, const double *thr_ene, const double *thr_rms, const double *e_offset,  \
      const double *dip_offset, const norvik_int *nbasis, const norvik_int *northo,              \
      const double *X, const double *S, const double *T, const double *V, const double *dipints, \
      NORVIK_CONTEXT_ARGS, NORVIK_KS_GRID_ARGS, double *G, double *rho, double *orbitals,        \
      double *energy, double *exc, double *etotal, double *dipole, double *de_final
NORVIK_API void KS_SCF(NORVIK_KS_SCF_ARGS);
NORVIK_API void KS_SCF_MOLE(NORVIK_KS_SCF_ARGS);
NORVIK_API void KS_SCF_ATOM(NORVIK_KS_SCF_ARGS);
NORVIK_API void KS_SCF_WOLOG(NORVIK_KS_SCF_ARGS);
NORVIK_API void KS_SCF_PART(NORVIK_KS_SCF_ARGS);
NORVIK_API void KS_SCF_DIRECT(NORVIK_KS_SCF_ARGS);
NORVIK_API void KS_SCF_MOLE_DIRECT(NORVIK_KS_SCF_ARGS);
NORVIK_API void KS_SCF_ATOM_DIRECT(NORVIK_KS_SCF_ARGS);
NORVIK_API void KS_SCF_WOLOG_DIRECT(NORVIK_KS_SCF_ARGS);
NORVIK_API void KS_SCF_PART_DIRECT(NORVIK_KS_SCF_ARGS);

/* Kohn–Sham initialisers (41 arguments): 1–26 those of HF_INI, 27–37 those of
 * KS_SCF, but chi (31) is written: the basis on the points from the context's
 * shell table (LIST_BASIS); 38 energy, 39 exc, 40 etotal, 41 dipole (out) of the
 * start.  The start density follows HF_INI's rule (istart other than 1: the
 * supplied rho rescaled, normally the converged Hartree–Fock density), then one
 * Kohn–Sham build makes G.  _MOLE is the plain one, _DIRECT builds
 * integral-direct. */
#define NORVIK_KS_INI_ARGS                                                                         \
  const norvik_int *istart, const norvik_int *natom, const double *atomrho,                        \
      const norvik_int *niter, const double *damp, const double *thr_ene, const double *thr_rms,   \
      const double *e_offset, const double *dip_offset, const norvik_int *nbasis,                  \
      const norvik_int *northo, const double *X, const double *S, const double *T,                 \
      const double *V, const double *dipints, NORVIK_CONTEXT_ARGS, const char *functional,         \
      const norvik_int *npts, const double *points, const double *w, double *chi, double *rhogrid, \
      double *vxc, double *nelec, double *G, double *rho, double *orbitals, double *energy,        \
      double *exc, double *etotal, double *dipole
NORVIK_API void KS_INI(NORVIK_KS_INI_ARGS);
NORVIK_API void KS_INI_MOLE(NORVIK_KS_INI_ARGS);
NORVIK_API void KS_INI_DIRECT(NORVIK_KS_INI_ARGS);
NORVIK_API void KS_INI_MOLE_DIRECT(NORVIK_KS_INI_ARGS);

/* Saves a Kohn–Sham point aside (the optimiser's undo): nbasis; rho; orbitals;
 * energy; exc (3); dipole (3) in; rhoks, orbitalsks, energyks, excks, dipoleks out. */
NORVIK_API void STOREKS(const norvik_int* nbasis, const double* rho, const double* orbitals,
                        const double* energy, const double* exc, const double* dipole,
                        double* rhoks, double* orbitalsks, double* energyks, double* excks,
                        double* dipoleks);

/* ---- symmetry-adapted SCF of the homonuclear diatomics C2 and B2 ----------------
 * The molecule lies on the z axis with its centre at the origin (the diatomic
 * templates put it there).  The basis functions are combined into the
 * symmetry-adapted combinations of D2h (inversion and the reflections x → −x,
 * y → −y: the operations that map Cartesian Gaussians onto each other), whose
 * blocks, in this order, are
 *   1 ag (σg)  2 b1g (δg xy)  3 b2g (πg x)  4 b3g (πg y)
 *   5 au (δu)  6 b1u (σu)     7 b2u (πu y)  8 b3u (πu x).
 * MAKESALC: 1 basis (in, 20 chars, the basis name); 2 natom (in, must be 2);
 *   3 zat (in, 2 nuclear charges, equal); 4 pos (in, (3, 2) Å);
 *   5 nbasis (in, must equal the basis size); 6 salc (out, (n, n): orthonormal
 *   columns (φ_A ± (−1)^L φ_B)/√2, sorted by block); 7 salcblock (out, 9
 *   integers: block b has columns salcblock(b) … salcblock(b+1)−1, 1-based;
 *   salcblock(9) = n+1).  A molecule off the axis or off centre stops with
 *   "Not a homonuclear diatomic centred on the z axis.".
 * The update members take the 15 arguments of UPDATERHO_DAMP/_DIIS followed by
 *   16 salc (in, (n, n)) and 17 salcblock (in, 9) from MAKESALC.  The Fock
 *   matrix of each spin is diagonalised within each block (F C = S C ε in the
 *   block's combinations) and each block gets a fixed number of electrons of
 *   that spin, from the spin's count N (nearest integer of Tr(ρσ S)): once four
 *   σ electrons are there, the π pair πu(x), πu(y) takes min(2, (N − 4)/2)
 *   electrons each; the rest fills σg and σu alternately from σg.  Six
 *   electrons give 1σg 2σg 1σu 2σu 1πu(x) 1πu(y) (C2 ¹Σg⁺ per spin, B2 ³Σg⁻
 *   alpha); four give the B2 beta spin.  C2 and B2 members follow the same rule
 *   (the configuration follows from the counts of the density); the plain and
 *   _GHQR members are the same (the blocks are always solved by the generalised
 *   solver).  orbitals: per spin the occupied orbitals first, then the virtual
 *   ones, each in ascending order of level (plain ascending order whenever the
 *   configuration is the aufbau one).
 * HF_SCF_C2/_B2 take the 32 arguments of HF_SCF followed by salc and
 *   salcblock; HF_INI_C2/_B2 the 31 arguments of HF_INI followed by salc and
 *   salcblock (their bare start makes one symmetric damped step). */
NORVIK_API void MAKESALC(const char* basis, const norvik_int* natom, const norvik_int* zat,
                         const double* pos, const norvik_int* nbasis, double* salc,
                         norvik_int* salcblock);
#define NORVIK_SALC_ARGS const double *salc, const norvik_int *salcblock
NORVIK_API void UPDATERHO_C2_DAMP(NORVIK_UPDATE_ARGS(const double* damp), NORVIK_SALC_ARGS);
NORVIK_API void UPDATERHO_C2_DAMP_GHQR(NORVIK_UPDATE_ARGS(const double* damp), NORVIK_SALC_ARGS);
NORVIK_API void UPDATERHO_C2_DIIS(NORVIK_UPDATE_ARGS(const norvik_int* nsub), NORVIK_SALC_ARGS);
NORVIK_API void UPDATERHO_C2_DIIS_GHQR(NORVIK_UPDATE_ARGS(const norvik_int* nsub),
                                       NORVIK_SALC_ARGS);
NORVIK_API void UPDATERHO_B2_DAMP(NORVIK_UPDATE_ARGS(const double* damp), NORVIK_SALC_ARGS);
NORVIK_API void UPDATERHO_B2_DAMP_GHQR(NORVIK_UPDATE_ARGS(const double* damp), NORVIK_SALC_ARGS);
NORVIK_API void UPDATERHO_B2_DIIS(NORVIK_UPDATE_ARGS(const norvik_int* nsub), NORVIK_SALC_ARGS);
NORVIK_API void UPDATERHO_B2_DIIS_GHQR(NORVIK_UPDATE_ARGS(const norvik_int* nsub),
                                       NORVIK_SALC_ARGS);
NORVIK_API void HF_SCF_C2(NORVIK_HF_SCF_ARGS, NORVIK_SALC_ARGS);
NORVIK_API void HF_SCF_B2(NORVIK_HF_SCF_ARGS, NORVIK_SALC_ARGS);
NORVIK_API void HF_INI_C2(NORVIK_HF_INI_ARGS, NORVIK_SALC_ARGS);
NORVIK_API void HF_INI_B2(NORVIK_HF_INI_ARGS, NORVIK_SALC_ARGS);
NORVIK_API void KS_SCF_C2(NORVIK_KS_SCF_ARGS, NORVIK_SALC_ARGS);
NORVIK_API void KS_SCF_B2(NORVIK_KS_SCF_ARGS, NORVIK_SALC_ARGS);

/* Position of the 4s (5s) function of an atom: 1 z (in, nuclear charge);
 * 2 index (out): the 1-based position, among that atom's functions in the
 * basis of the routine's name (STO-3G, 6-31G, 3-21G, 3-21GC: 3-21G with
 * Cartesian d sets), of its 4s (5s) function, the inner part of a split valence
 * shell; 0 when the atom has none (z below 19 for 4s, below 37 for 5s). */
NORVIK_API void FIND4S_STO3G(const norvik_int* z, norvik_int* index);
NORVIK_API void FIND4S_631G(const norvik_int* z, norvik_int* index);
NORVIK_API void FIND5S_STO3G(const norvik_int* z, norvik_int* index);
NORVIK_API void FIND5S_321G(const norvik_int* z, norvik_int* index);
NORVIK_API void FIND5S_321GC(const norvik_int* z, norvik_int* index);

/* ---- whole calculations ----------------------------------------------------------- */

/* Free atoms: one UHF per distinct element among the atoms with a nonzero nuclear
 * charge, ground-state multiplicity, isolated-atom exponents for STO-3G; for a
 * Kohn–Sham method the atom's Kohn–Sham SCF follows on the grid and gives its energy.
 *   1 basis (in, 20 chars);  2 natom;  3 zat (in, natom nuclear charges, 0 ghost);
 *   4 zel (in, natom elements);  5 niter, 6 damp, 7 thr_ene, 8 thr_rms (in, 2 each:
 *   the atom settings of the Hartree–Fock SCF, then of the Kohn–Sham SCF, which only
 *   a Kohn–Sham method reads);  9 ramlimit (in, GB: in-core limit for the integral
 *   store);  10 thr_orth (in, smallest overlap eigenvalue kept);  11 nbasis (in, the
 *   molecule's basis size);  12 eatom (out, natom: free-atom energy of each atom
 *   [eV], 0 for a ghost);  13 atomrho (out, (n, n, 2): the Hartree–Fock free-atom
 *   densities, spherically averaged, on the diagonal blocks of their atoms);
 *   14 method (in, 10 chars, as SCF_1POINT's);  15 grid_radius (in, Å) and
 *   16 grid_level (in), as SCF_1POINT's, read only for a Kohn–Sham method. */
NORVIK_API void ATOMS(const char* basis, const norvik_int* natom, const norvik_int* zat,
                      const norvik_int* zel, const norvik_int* niter, const double* damp,
                      const double* thr_ene, const double* thr_rms, const double* ramlimit,
                      const double* thr_orth, const norvik_int* nbasis, double* eatom,
                      double* atomrho, const char* method, const double* grid_radius,
                      const norvik_int* grid_level);

/* ATOMS_HEHPL: ATOMS for HeH+, with its 16 arguments: the He atoms as ATOMS
 * computes them, every H atom the bare proton H+ (no electron: energy 0, an
 * empty density block), so that the binding energy of HeH+ is that against
 * He + H+.  The start densities then hold He's electrons only. */
NORVIK_API void ATOMS_HEHPL(const char* basis, const norvik_int* natom, const norvik_int* zat,
                            const norvik_int* zel, const norvik_int* niter, const double* damp,
                            const double* thr_ene, const double* thr_rms, const double* ramlimit,
                            const double* thr_orth, const norvik_int* nbasis, double* eatom,
                            double* atomrho, const char* method, const double* grid_radius,
                            const norvik_int* grid_level);

/* Hartree–Fock single point from the outputs of SETUP_HF:
 *   1 basis (in, 20 chars);  2 natom;  3 zat;  4 zel;  5 pos (in, (3, natom) Å);
 *   6 nalpha, 7 nbeta (in);  8 niter, 9 damp, 10 thr_ene, 11 thr_rms (in, the
 *   molecule settings);  12 ramlimit (in, GB);  13 thr_screen (in, eV: integral-
 *   direct screening, 0 none);  14 thr_orth (in);  15 istart (in, as HF_INI);
 *   16 atomrho (in, (n, n, 2), from ATOMS; read only for a fresh start of more
 *   than 9 atoms);  17 nbasis (in, must equal the basis size);  18 rho (in-out);
 *   19 orbitals (out);  20 energy (out, molecular energy: electronic + nuclear
 *   repulsion, eV);  21 dipole (out, 3, electronic + nuclear, e·Å);
 *   22 de_final (out, eV);  23 northo (out);  24 incore (out, 1 stored integrals,
 *   0 integral-direct).
 * A wrong nbasis stops with "Wrong nbasis in HF_1point." and both numbers. */
NORVIK_API void HF_1POINT(const char* basis, const norvik_int* natom, const norvik_int* zat,
                          const norvik_int* zel, const double* pos, const norvik_int* nalpha,
                          const norvik_int* nbeta, const norvik_int* niter, const double* damp,
                          const double* thr_ene, const double* thr_rms, const double* ramlimit,
                          const double* thr_screen, const double* thr_orth,
                          const norvik_int* istart, const double* atomrho, const norvik_int* nbasis,
                          double* rho, double* orbitals, double* energy, double* dipole,
                          double* de_final, norvik_int* northo, norvik_int* incore);

/* Kohn–Sham single point: HF_1POINT's point with the Kohn–Sham stage, no run log.
 *   1 functional (in, 10 chars; a Hartree–Fock method or an unknown name stops with
 *     " Wrong DFname in calcvXchCorr." and the list of names);  2 basis;  3 natom;
 *   4 zat;  5 zel;  6 pos;  7 nalpha, 8 nbeta;  9 niter, 10 damp, 11 thr_ene,
 *   12 thr_rms (in, 2 each: the Hartree–Fock stage, then the Kohn–Sham stage);
 *   13 ramlimit;  14 thr_screen;  15 thr_orth;  16 istart, 17 atomrho (as
 *   HF_1POINT's);  18 nbasis;  19 rho (in-out);  20 orbitals (out);  21 energy
 *   (out, molecular energy with the exchange–correlation energy, eV);  22 dipole;
 *   23 de_final;  24 northo;  25 incore;  26 grid_radius (in, Å);  27 grid_level
 *   (in, 0 standard, 1 dense);  28 xc (out, 4: exchange–correlation energy, its
 *   exchange and correlation parts [eV], the electrons the grid sees). */
NORVIK_API void KS_1POINT(const char* functional, const char* basis, const norvik_int* natom,
                          const norvik_int* zat, const norvik_int* zel, const double* pos,
                          const norvik_int* nalpha, const norvik_int* nbeta,
                          const norvik_int* niter, const double* damp, const double* thr_ene,
                          const double* thr_rms, const double* ramlimit, const double* thr_screen,
                          const double* thr_orth, const norvik_int* istart, const double* atomrho,
                          const norvik_int* nbasis, double* rho, double* orbitals, double* energy,
                          double* dipole, double* de_final, norvik_int* northo, norvik_int* incore,
                          const double* grid_radius, const norvik_int* grid_level, double* xc);

/* One point of a job, as a host runs it: the single point of HF_1POINT with
 * the run log and the point's report sections.
 *   1 method (in, 10 chars: "HF", "MP2", "RPA", "TDA" run Hartree–Fock; any
 *     other value is a functional name: the Hartree–Fock SCF, then the Kohn–Sham
 *     SCF from its density on the molecular grid; a name that is no functional
 *     stops with " Wrong DFname in calcvXchCorr." and the list of names);
 *   2 basis (in, 20 chars);  3 report (in, 120 chars: receives the linear
 *     dependence of the basis, WRITE_DEPEND, and the in-core choice,
 *     WRITE_INCORE);  4 logfile (in, 120 chars, blank: none): one line per SCF
 *     cycle, as HF_SCF writes it (its first integer iopt, its second 0), and a
 *     blank line after the SCF;  5 iopt (in);
 *   6 natom;  7 zat;  8 zel;  9 pos (in, (3, natom) Å);  10 nalpha, 11 nbeta;
 *   12 niter, 13 damp, 14 thr_ene, 15 thr_rms (in, 2 each: the molecule
 *     settings of the Hartree–Fock stage, then of the Kohn–Sham stage, which only
 *     a Kohn–Sham method reads);
 *   16 ramlimit (in, GB);  17 thr_screen (in, eV);  18 thr_orth (in);
 *   19 start (in): 0 the bare one-electron start (the orbitals of T + V), 1 the
 *     superposed free-atom densities atomrho (the bare start when they hold no
 *     electrons), 2 the density supplied in rho, rescaled to nalpha, nbeta;
 *   20 atomrho (in, (n, n, 2), from ATOMS; read only for start 1);
 *   21 nbasis (in, must equal the basis size);  22 S (out, (n, n) overlap);
 *   23 rho (in-out, (n, n, 2));  24 orbitals (out, (n, n+1, 2));
 *   25 energy (out, 3: electronic, nuclear repulsion, molecular, eV);
 *   26 dipole (out, 3, electronic + nuclear, e·Å);  27 de_final (out, eV);
 *   28 northo (out);  29 incore (out, 1 stored integrals, 0 integral-direct);
 *   30 ncycle (out, SCF cycles made);  31 converged (out, flag: the SCF met both
 *     thresholds before niter cycles);  32 rmsd (out, RMS density change of the
 *     last cycle);  33 commutator (out, |FPS − SPF| of the last cycle in hartree,
 *     as the run log writes it);  34 grid_radius (in, Å: the base radius R0 of
 *     the grid templates, Kohn–Sham only; 0.5291772104, one bohr, is the host's);
 *   35 xc (out, 4: exchange-correlation energy, its exchange and correlation
 *     parts [eV], the electrons the grid sees; zero for Hartree–Fock);
 *   36 grid_level (in, Kohn–Sham only): 0 the standard grid templates, 1 the dense
 *     grid for converged energies; any other value stops with "Wrong grid level in
 *     SCF_1point." and the value.
 * For a Kohn–Sham method energy(1) includes the exchange-correlation energy, and
 * the run log, ncycle, converged, rmsd and commutator are those of the Kohn–Sham
 * stage.
 * Progress: "Integrals ok." on standard output once the integrals are ready.  An
 * SCF that used up its niter cycles (niter ≥ 1) appends "SCF not converged in N
 * cycles" with the last energy change and RMS density change to the report.
 * A wrong nbasis stops with "Wrong nbasis in SCF_1point." and both numbers. */
NORVIK_API void SCF_1POINT(const char* method, const char* basis, const char* report,
                           const char* logfile, const norvik_int* iopt, const norvik_int* natom,
                           const norvik_int* zat, const norvik_int* zel, const double* pos,
                           const norvik_int* nalpha, const norvik_int* nbeta,
                           const norvik_int* niter, const double* damp, const double* thr_ene,
                           const double* thr_rms, const double* ramlimit, const double* thr_screen,
                           const double* thr_orth, const norvik_int* start, const double* atomrho,
                           const norvik_int* nbasis, double* S, double* rho, double* orbitals,
                           double* energy, double* dipole, double* de_final, norvik_int* northo,
                           norvik_int* incore, norvik_int* ncycle, norvik_bool* converged,
                           double* rmsd, double* commutator, const double* grid_radius, double* xc,
                           const norvik_int* grid_level);

/* Analytic gradient of a converged Hartree–Fock point, dE/dR of every atom:
 *   1 basis (in, 20 chars);  2 natom;  3 zat (nuclear charges, 0 for a ghost);
 *   4 zel (elements);  5 pos (in, (3, natom) Å);  6 nalpha, 7 nbeta;  8 nbasis;
 *   9 rho (in, (n, n, 2): the converged density pair);  10 orbitals (in, (n, n + 1,
 *   2): the converged orbitals with their levels [eV] in the last column);
 *   11 grad (out, (3, natom) eV/Å).
 * The lowest nalpha and nbeta orbitals are the occupied ones.  A wrong nbasis stops
 * with "Wrong nbasis in GradEmol_HF." and both numbers. */
NORVIK_API void GRADEMOL_HF(const char* basis, const norvik_int* natom, const norvik_int* zat,
                            const norvik_int* zel, const double* pos, const norvik_int* nalpha,
                            const norvik_int* nbeta, const norvik_int* nbasis, const double* rho,
                            const double* orbitals, double* grad);
/* The same for one atom: arguments 1–10 of GRADEMOL_HF, 11 iatom (in, 1 … natom),
 * 12 grad (out, 3, eV/Å).  Only the terms that involve the atom are computed. */
NORVIK_API void GRADEMOL_HF_SUB(const char* basis, const norvik_int* natom, const norvik_int* zat,
                                const norvik_int* zel, const double* pos, const norvik_int* nalpha,
                                const norvik_int* nbeta, const norvik_int* nbasis,
                                const double* rho, const double* orbitals, const norvik_int* iatom,
                                double* grad);

/* Analytic gradient of a converged Kohn–Sham point, with the exchange–correlation
 * term on the molecular grid that moves with the atoms (the exact derivative of the
 * energy on that grid):  1 functional (in, 10 chars);  2–11 as GRADEMOL_HF's 1–10;
 *   12 grid_radius (in, Å), 13 grid_level (in, 0 standard, 1 dense): the grid of the
 *   SCF;  14 grad (out, (3, natom) eV/Å). */
NORVIK_API void GRADEMOL_KS(const char* functional, const char* basis, const norvik_int* natom,
                            const norvik_int* zat, const norvik_int* zel, const double* pos,
                            const norvik_int* nalpha, const norvik_int* nbeta,
                            const norvik_int* nbasis, const double* rho, const double* orbitals,
                            const double* grid_radius, const norvik_int* grid_level, double* grad);
/* The same for one atom: arguments 1–13 of GRADEMOL_KS, 14 iatom (in, 1 … natom),
 * 15 grad (out, 3, eV/Å). */
NORVIK_API void GRADEMOL_KS_SUB(const char* functional, const char* basis, const norvik_int* natom,
                                const norvik_int* zat, const norvik_int* zel, const double* pos,
                                const norvik_int* nalpha, const norvik_int* nbeta,
                                const norvik_int* nbasis, const double* rho, const double* orbitals,
                                const double* grid_radius, const norvik_int* grid_level,
                                const norvik_int* iatom, double* grad);

/* ---- report sections (each appends to the report file, the last argument) ------- */

/* Free-atom energies: natom; zat; zel; eatom (natom, eV); report. */
NORVIK_API void WRITE_ENERGY_ATOM(const norvik_int* natom, const norvik_int* zat,
                                  const norvik_int* zel, const double* eatom, const char* report);
/* Energy breakdown: eelec (electronic), enuc (nuclear repulsion), eatoms (sum of the
 * free-atom energies; 0 leaves out the binding energy), all eV; report. */
NORVIK_API void WRITE_ENERGY_MOL(const double* eelec, const double* enuc, const double* eatoms,
                                 const char* report);
/* Exchange-correlation energy of a Kohn-Sham point: xc (4: total, exchange,
 * correlation [eV], electrons the grid sees, as SCF_1POINT returns them); report. */
NORVIK_API void WRITE_ENERGY_KS(const double* xc, const char* report);
/* Molecular energy of an SCF: emol (eV); de_final (eV); report. */
NORVIK_API void WRITE_EMOL(const double* emol, const double* de_final, const char* report);
/* Orbital levels: nbasis; nlevel (levels to write per spin, at most northo);
 * nalpha, nbeta; orbitals ((n, n+1, 2)); report. */
NORVIK_API void WRITE_LEVELS(const norvik_int* nbasis, const norvik_int* nlevel,
                             const norvik_int* nalpha, const norvik_int* nbeta,
                             const double* orbitals, const char* report);
/* Occupation: HOMO, LUMO and gap of each spin: nbasis; northo; nalpha, nbeta;
 * orbitals; report. */
NORVIK_API void WRITE_OCCUPY(const norvik_int* nbasis, const norvik_int* northo,
                             const norvik_int* nalpha, const norvik_int* nbeta,
                             const double* orbitals, const char* report);
/* Electric dipole moment: dipole (3, e·Å); report. */
NORVIK_API void WRITE_EDM(const double* dipole, const char* report);
/* Linear dependence of the basis: nbasis; northo; thr_orth; report. */
NORVIK_API void WRITE_DEPEND(const norvik_int* nbasis, const norvik_int* northo,
                             const double* thr_orth, const char* report);
/* Spin contamination <S**2> of an unrestricted solution: nbasis; S; rho; report. */
NORVIK_API void WRITE_SPINCONTAMI(const norvik_int* nbasis, const double* S, const double* rho,
                                  const char* report);

NORVIK_EXTERN_C_END

#endif
