/* Shared timing frame of the in-process C peers of bench/compare. Each
 * program defines run_op(op, in) returning a result handle or NULL, and
 * free_result(); prints "MEDIAN_MS PEAK_KB" or "n/a". */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <time.h>

static double now_ms(void) {
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1000.0 + t.tv_nsec / 1e6;
}

static int cmp_double(const void* a, const void* b) {
    double x = *(const double*)a, y = *(const double*)b;
    return x < y ? -1 : x > y;
}

static void report(double* times, int n) {
    struct rusage u;
    qsort(times, n, sizeof(double), cmp_double);
    getrusage(RUSAGE_SELF, &u);
    printf("%.2f %ld\n", times[n / 2], u.ru_maxrss);
}
