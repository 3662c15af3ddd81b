#include "base/thread_class.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>

#include "base/compat.h"
#include "base/thread_map.h"
#include "support/scratch.h"

using testsupport::WaitFor;

namespace {

// A thread object whose body is given by the test.
class FuncThread : public CThreadClass {
 public:
  explicit FuncThread(std::function<int(FuncThread*)> body = nullptr) : body_(std::move(body)) {}
  ~FuncThread() override { Kill(-1); }
  int Thread() override { return body_ ? body_(this) : -1; }

 private:
  std::function<int(FuncThread*)> body_;
};

int RunUntilKilled(FuncThread* t) {
  while (t->IsRunning()) SleepMs(1);
  return 0;
}

}  // namespace

// ---------------------------------------------------------------- Start/Kill

TEST(ThreadStartKill, KillOnNeverStartedObjectDoesNothing) {
  FuncThread t(RunUntilKilled);
  EXPECT_EQ(t.Kill(0), 0);
  EXPECT_EQ(t.Handle(), pthread_t(0));
  EXPECT_EQ(t.IsExit(), 1);
  EXPECT_EQ(t.IsRunning(), 0);
  EXPECT_TRUE(t.StopFlag());
}

TEST(ThreadStartKill, KillAfterBodyEndedJoinsNothingAndDestructionReapsIt) {
  pthread_t handle = 0;
  {
    std::atomic<bool> ran{false};
    FuncThread t([&](FuncThread*) {
      ran = true;
      return 7;
    });
    ASSERT_EQ(t.Start(0), 0);
    ASSERT_TRUE(WaitFor([&] { return t.IsExit() == 1; }));
    EXPECT_TRUE(ran);
    EXPECT_TRUE(t.StopFlag());
    EXPECT_EQ(t.IsRunning(), 0);
    handle = t.Handle();
    ASSERT_NE(handle, pthread_t(0));

    EXPECT_EQ(t.Kill(0), 0);
    // Not joined: the handle and its entry in the thread table stay.
    EXPECT_EQ(t.Handle(), handle);
    EXPECT_EQ(thread_in_map(handle), 1);
  }
  // The destructor joined the finished thread and took it off the table.
  EXPECT_EQ(thread_in_map(handle), 0);
}

TEST(ThreadStartKill, StartOnRunningObjectJoinsTheOldThreadFirst) {
  std::atomic<int> started{0}, ended{0};
  FuncThread t([&](FuncThread* self) {
    ++started;
    while (!self->StopFlag()) SleepMs(1);
    SleepMs(50);  // a slow wind-down that only a join waits for
    ++ended;
    return 0;
  });
  ASSERT_EQ(t.Start(0), 0);
  ASSERT_TRUE(WaitFor([&] { return started == 1; }));
  EXPECT_FALSE(t.StopFlag());

  ASSERT_EQ(t.Start(0), 0);
  EXPECT_EQ(ended, 1);  // Start came back only after the first body had ended
  ASSERT_TRUE(WaitFor([&] { return started == 2; }));
  EXPECT_EQ(t.IsRunning(), 1);
  EXPECT_FALSE(t.StopFlag());

  EXPECT_EQ(t.Kill(0), 0);
  EXPECT_EQ(ended, 2);
  EXPECT_EQ(t.Handle(), pthread_t(0));
  EXPECT_EQ(t.IsExit(), 1);
}

TEST(ThreadStartKill, BodyThatKillsItselfEndsAndCanBeStartedAgain) {
  std::atomic<int> runs{0};
  FuncThread t([&](FuncThread* self) {
    ++runs;
    self->Kill(0);  // cannot join itself
    return 0;
  });
  ASSERT_EQ(t.Start(0), 0);
  ASSERT_TRUE(WaitFor([&] { return t.IsExit() == 1 && t.Handle() == pthread_t(0); }));
  ASSERT_EQ(t.Start(0), 0);
  ASSERT_TRUE(WaitFor([&] { return runs == 2 && t.IsExit() == 1; }));
}

// ---------------------------------------------------------------- SleepThread

TEST(ThreadSleep, ReturnsOneAfterItsTime) {
  std::atomic<int> result{-1};
  std::atomic<unsigned long> elapsed{0};
  FuncThread t([&](FuncThread* self) {
    unsigned long start = GetTickCount();
    int r = self->SleepThread(300, 0);
    elapsed = GetTickCount() - start;
    result = r;
    while (self->IsRunning()) SleepMs(1);
    return 0;
  });
  ASSERT_EQ(t.Start(0), 0);
  ASSERT_TRUE(WaitFor([&] { return result != -1; }));
  EXPECT_EQ(result, 1);
  EXPECT_GE(elapsed, 300u);
}

TEST(ThreadSleep, ReturnsZeroWhenKillInterruptsIt) {
  std::atomic<bool> sleeping{false};
  std::atomic<int> result{-1};
  FuncThread t([&](FuncThread* self) {
    sleeping = true;
    result = self->SleepThread(600000, 5);
    return 0;
  });
  ASSERT_EQ(t.Start(0), 0);
  ASSERT_TRUE(WaitFor([&] { return sleeping.load(); }));
  EXPECT_EQ(t.Kill(0), 0);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(t.SleepThread(600000, 1), 1);  // not running: answers at once
}

// ---------------------------------------------------------------- pause

TEST(ThreadPause, BodyThatChecksAcknowledgesThePause) {
  std::atomic<int> acks{0};
  FuncThread t([&](FuncThread* self) {
    while (self->IsRunning()) {
      if (self->CheckAllOk() == 0) ++acks;
      SleepMs(1);
    }
    return 0;
  });
  ASSERT_EQ(t.Start(0), 0);
  EXPECT_EQ(t.EnterPause(60000), 0);
  EXPECT_EQ(t.IsPause(), 1);
  // Acknowledged once; the state stays 1 until a derived class resets it.
  ASSERT_TRUE(WaitFor([&] { return acks == 1; }));
  EXPECT_EQ(t.CheckAllOk(), 1);
  EXPECT_EQ(t.IsPause(), 1);
}

TEST(ThreadPause, UnacknowledgedPauseTimesOutAndIdleObjectRefuses) {
  FuncThread idle;
  EXPECT_EQ(idle.EnterPause(100), -1);
  EXPECT_EQ(idle.IsPause(), 0);

  FuncThread t(RunUntilKilled);
  ASSERT_EQ(t.Start(0), 0);
  EXPECT_EQ(t.EnterPause(50), -2);
  EXPECT_EQ(t.IsPause(), -1);
}

// ---------------------------------------------------------------- named locks

TEST(ThreadNamedLocks, NumberAndTextKeysNameTheSameLock) {
  FuncThread owner;
  owner.Lock(5);
  owner.UnLock("5");  // releases the lock taken as 5
  std::atomic<bool> got{false};
  std::thread other([&] {
    owner.Lock("5");
    got = true;
    owner.UnLock(5);
  });
  bool acquired = WaitFor([&] { return got.load(); });
  if (!acquired) owner.UnLock(5);
  other.join();
  EXPECT_TRUE(acquired);

  owner.Lock(-12);
  owner.UnLock("-12");
  owner.RemoveLock("-12");
  owner.Lock(-12);  // made anew after the removal
  owner.UnLock(-12);
}

// ---------------------------------------------------------------- priority

TEST(ThreadPriority, RaisesRoundRobinPriorityForTheSuperUser) {
  FuncThread t;
  pthread_attr_t attr;
  ASSERT_EQ(pthread_attr_init(&attr), 0);
  int ret = t.setthreadhighpriority(&attr);
  if (getuid() != 0) {
    EXPECT_EQ(ret, 1);
  } else {
    int inherit = -1, policy = -1;
    struct sched_param param = {};
    pthread_attr_getinheritsched(&attr, &inherit);
    pthread_attr_getschedpolicy(&attr, &policy);
    pthread_attr_getschedparam(&attr, &param);
    EXPECT_EQ(inherit, PTHREAD_EXPLICIT_SCHED);
    EXPECT_EQ(policy, SCHED_RR);
    // A fresh attribute's 0 counts as 30, raised six tenths of the way to 99.
    EXPECT_EQ(param.sched_priority, 71);
  }
  pthread_attr_destroy(&attr);
}
