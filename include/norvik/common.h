/* norvik: the sizes and constants of the interface (see norvik.h for the convention).
 *
 * Plain macros, usable from C and C++ alike (array bounds, constant expressions).
 * The library itself takes these values from here, so a host that sizes its
 * buffers and converts its units with them always agrees with it. */
#ifndef NORVIK_COMMON_H
#define NORVIK_COMMON_H

/* ---- text buffers: fixed lengths, blank-padded, no terminating NUL ------------- */

#define NORVIK_FILE_NAME_LENGTH 120 /* file names, record 12 of the molecule file */
#define NORVIK_KEYWORD_LENGTH 10    /* theory and functional keywords */
#define NORVIK_NAME_LENGTH 20       /* basis-set, molecule and element names, other texts */
#define NORVIK_SYMBOL_LENGTH 2      /* element symbols ("H ", "Cl") */
#define NORVIK_TIMESTAMP_LENGTH 40  /* the text of TIMESTAMP */

/* ---- the shell table of the two-electron routines ----------------------------------
 * PACKSHELLS writes NORVIK_SHELL_RECORD doubles per shell, (NORVIK_SHELL_RECORD,
 * nshell) column-major; integers are stored as exact doubles.  The slots below
 * are 0-based offsets into one record (the documentation counts from 1):
 *   kind (number of basis functions), primitives, atom (1-based), centre x y z
 *   in bohr, then six exponents (zero beyond the primitives), then seven function
 *   slots of NORVIK_SHELL_FUNCTION_SIZE values each: L, M, nterm, (l, m, n) of
 *   three Cartesian terms, three term coefficients, six contraction coefficients.
 *   The last double of the record is unused (zero). */
#define NORVIK_SHELL_RECORD 160
#define NORVIK_SHELL_KIND 0
#define NORVIK_SHELL_NPRIM 1
#define NORVIK_SHELL_ATOM 2
#define NORVIK_SHELL_CENTRE 3
#define NORVIK_SHELL_EXPONENTS 6
#define NORVIK_SHELL_FUNCTIONS 12
#define NORVIK_SHELL_FUNCTION_SIZE 21

/* ---- SCF histories ----------------------------------------------------------------
 * Slots per spin of the damping/DIIS histories fockhist and errhist, (n, n, 6, 2). */
#define NORVIK_HISTORY_SLOTS 6

/* ---- physical constants and unit conversions ----------------------------------------
 * The interface works in ångström and electronvolt; the report header shows the
 * first two (WRITE_CONST). */
#define NORVIK_BOHR_ANGSTROM 0.5291772104           /* bohr in ångström */
#define NORVIK_HARTREE_EV 27.2113850785             /* hartree in eV */
#define NORVIK_RYDBERG_EV 13.60569253925            /* rydberg in eV */
#define NORVIK_HBARC_EV_ANGSTROM 1973.269717        /* ħc in eV·Å */
#define NORVIK_INVERSE_FINE_STRUCTURE 137.035999074 /* 1/α */
#define NORVIK_ELECTRON_REST_ENERGY_KEV 510.9989273 /* m_e c² in keV */
#define NORVIK_KT298_EV 0.02569257912065            /* k_B · 298.15 K in eV */
#define NORVIK_ATOMIC_MASS_UNIT_EV 931494102.42     /* m_u c² in eV (CODATA 2018) */
#define NORVIK_AVOGADRO 6.02214076e23               /* Avogadro constant in 1/mol (exact) */
#define NORVIK_ELEMENTARY_CHARGE 1.602176634e-19    /* e in C (exact): 1 eV in J */
#define NORVIK_CALORIE_JOULE 4.184                  /* thermochemical calorie in J */
/* The run log converts its commutator norm with this older value of the hartree,
 * kept as it is so that logs stay comparable from version to version. */
#define NORVIK_HARTREE_EV_LOG 27.211385041184638

#endif
