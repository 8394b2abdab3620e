#include "Subject.h"
#include "checks.h"
#include "expectations.h"

#include <mutex>
#include <thread>

// Contexts beside each other: a platform may have one engine, but each context is its own.

namespace vorl::testkit {

using tarvik::crypto::ICipherContext;

namespace {

const std::size_t PLAIN_BYTES = 40;

// One operation on one of several contexts, in steps.
struct Course {
    std::shared_ptr<ICipherContext> context;
    Direction direction;
    bytes iv;
    bytes in;
    bytes expected;
    bytes out;
};

void append(bytes& all, const bytes& more) {
    all.insert(all.end(), more.begin(), more.end());
}

void runInterleaved(const Mode& mode, std::vector<Course>& courses, const std::string& beside) {
    const std::size_t half = PLAIN_BYTES / 2;
    const std::string what = std::string(mode.name) + ": an operation beside " + beside;
    doing(what, [&] {
        for (Course& course : courses) {
            init(*course.context, course.direction, course.iv);
        }
        for (Course& course : courses) {
            const auto middle = course.in.begin() + static_cast<std::ptrdiff_t>(half);
            append(course.out, course.context->update(bytes(course.in.begin(), middle)));
        }
        for (Course& course : courses) {
            const auto middle = course.in.begin() + static_cast<std::ptrdiff_t>(half);
            append(course.out, course.context->update(bytes(middle, course.in.end())));
        }
        for (Course& course : courses) {
            append(course.out, course.context->final());
        }
    });
    for (const Course& course : courses) {
        require(course.out == course.expected, what + " yields a wrong result");
    }
}

// The operations' results, each computed alone.
Course course(const Subject& subject, const Mode& mode, KeyName key, Direction direction,
              unsigned char firstOfIv) {
    const bytes iv = ivOf(mode, firstOfIv);
    const bytes plain = octets(PLAIN_BYTES);
    const bytes ciphertext = subject.sealed(mode, key, iv, plain);
    return direction == Direction::ENCRYPT
               ? Course{subject.context(mode, key), direction, iv, plain, ciphertext, {}}
               : Course{subject.context(mode, key), direction, iv, ciphertext, plain, {}};
}

void contextsOfTwoKeysAreApart(const Platform& platform) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        for (const Direction direction : {Direction::ENCRYPT, Direction::DECRYPT}) {
            std::vector<Course> courses = {course(subject, mode, FIRST_KEY, direction, 1),
                                           course(subject, mode, SECOND_KEY, direction, 2)};
            runInterleaved(mode, courses, "one under another key");
        }
    }
}

void contextsOfOneKeyAreApart(const Platform& platform) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        std::vector<Course> courses = {course(subject, mode, FIRST_KEY, Direction::ENCRYPT, 1),
                                       course(subject, mode, FIRST_KEY, Direction::DECRYPT, 2),
                                       course(subject, mode, FIRST_KEY, Direction::ENCRYPT, 3)};
        runInterleaved(mode, courses, "others under the same key");
    }
}

void workOfOneThread(const Subject& subject, KeyName key, unsigned char number) {
    for (const Mode& mode : AES_MODES) {
        const auto context = subject.context(mode, key);
        for (unsigned char round = 0; round < 25; ++round) {
            const bytes iv = ivOf(mode, static_cast<unsigned char>(number * 25 + round));
            const bytes plain(round * std::size_t{3}, number);
            const std::string encrypting = operation(mode, Direction::ENCRYPT, plain.size()) + " in a thread";
            const bytes ciphertext =
                doing(encrypting, [&] { return operate(*context, Direction::ENCRYPT, iv, plain); });
            subject.expectSealed(encrypting, mode, key, iv, plain, ciphertext);
            const std::string decrypting =
                operation(mode, Direction::DECRYPT, ciphertext.size()) + " in a thread";
            require(doing(decrypting,
                          [&] { return operate(*context, Direction::DECRYPT, iv, ciphertext); }) == plain,
                    decrypting + " yields another message");
        }
    }
}

void threadsHaveContextsOfTheirOwn(const Platform& platform) {
    const Subject subject(platform);
    std::mutex mutex;
    std::string fault;
    std::vector<std::thread> threads;
    for (unsigned char number = 0; number < 4; ++number) {
        threads.emplace_back([&, number] {
            try {
                workOfOneThread(subject, number % 2 == 0 ? FIRST_KEY : SECOND_KEY, number);
            } catch (const Failure& failure) {
                const std::lock_guard<std::mutex> lock(mutex);
                fault = failure.what();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    require(fault.empty(), fault);
}

}  // namespace

std::vector<Check> sharingChecks() {
    return {
        {"contexts-of-two-keys-are-apart", "Contexts under different keys do not disturb each other",
         contextsOfTwoKeysAreApart},
        {"contexts-of-one-key-are-apart", "Contexts under the same key do not disturb each other",
         contextsOfOneKeyAreApart},
        {"threads-have-contexts-of-their-own", "Threads that make and use contexts do not disturb each other",
         threadsHaveContextsOfTheirOwn},
    };
}

}  // namespace vorl::testkit
